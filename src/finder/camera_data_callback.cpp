#include "finder/camera_data_callback.h"

#include <utility>

namespace Tarn::CameraFinding {

CameraDataCallback::CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo,
                                       ModuleHold& moduleHold)
    : moduleHold_(moduleHold),
      receiver_(Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(
          callback, moduleHold.ForReceiver())),
      streamInfo_(std::move(streamInfo)) {
  SetStreamDataCallback(*streamInfo_, kRegisterDataCallback, receiver_.Get());
}

// An exception is not caught, so it ends the process: the platform library would otherwise go on calling a callback
// that the wizard believes removed.
CameraDataCallback::~CameraDataCallback() {
  SetStreamDataCallback(*streamInfo_, kUnregisterDataCallback, receiver_.Get());
  streamInfo_.reset();
  moduleHold_.ReceiverReleased(receiver_.Detach()->Release() == 0);
}

}  // namespace Tarn::CameraFinding
