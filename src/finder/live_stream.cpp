#include "finder/live_stream.h"

#include "base/exceptions.h"

namespace Tarn::CameraFinding {

void ThrowLastDBIError() {
  DBIErrorRecord record{};
  if (!TarnDBIGetLastError(&record)) return;
  throw DBIException(record.errorClass, record.errorCode, record.className, record.description, record.additionalText);
}

std::shared_ptr<LiveStreamInfo> CreateLiveStream(void* server, void* channelArgument) {
  auto info = std::make_shared<LiveStreamInfo>();
  TTarnLiveStream* handle = nullptr;
  if (!TarnServer_CreateLiveStream(server, &handle)) ThrowLastDBIError();
  // A null handle is kept as an empty pointer: there is nothing to destroy. The constructor destroys the handle itself
  // where there is no memory for its control block.
  if (handle) info->stream = std::shared_ptr<TTarnLiveStream>(handle, TarnLiveStream_Destroy);
  info->channelArgument = channelArgument;
  return info;
}

bool EnsureStreamStarted(LiveStreamInfo& info) {
  if (!info.stream) return false;
  if (info.started.load()) return true;
  try {
    const StreamOpenParameters parameters = {sizeof(StreamOpenParameters), 0, info.channelArgument};
    void* output1 = nullptr;
    void* output2 = nullptr;
    if (!TarnLiveStream_Open(info.stream.get(), &parameters, 0, &output1, &output2, 0)) ThrowLastDBIError();
    if (!TarnLiveStream_Start(info.stream.get())) ThrowLastDBIError();
  } catch (...) {  // the error, or no memory to tell of it
    return false;
  }
  info.started.store(true);
  return true;
}

void SetStreamDataCallback(LiveStreamInfo& info, std::uint32_t mode, IGenericDataReceivedCallback* callback) {
  if (!info.stream) return;
  if (!TarnLiveStream_SetGenericDataCallback(info.stream.get(), mode, callback)) ThrowLastDBIError();
}

}  // namespace Tarn::CameraFinding
