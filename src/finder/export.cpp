#include "finder/ipc_finder.h"
#include "platform/compiler.h"
#include "platform/process_end.h"
#include "tarn/camera_finding.h"

using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::IPCFinder;

extern "C" TARN_EXPORT void GetFindingInterface(void* server, void* channelArgument, ICameraFinder** finder) {
  platform::WatchExit();
  if (!finder) return;
  *finder = Kestrel::MakeComObject<IPCFinder, ICameraFinder>(server, channelArgument).Detach();
}
