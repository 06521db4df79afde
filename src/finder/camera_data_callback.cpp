#include "finder/camera_data_callback.h"

#include <utility>

namespace Tarn::CameraFinding {

CameraDataCallback::CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo,
                                       std::shared_ptr<const void> heldByReceiver)
    : receiver_(Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(
          callback, std::move(heldByReceiver))),
      streamInfo_(std::move(streamInfo)) {
  SetStreamDataCallback(*streamInfo_, kRegisterDataCallback, receiver_.Get());
}

// An exception is not caught, so it ends the process: the platform library would otherwise go on calling a callback
// that the wizard believes removed.
CameraDataCallback::~CameraDataCallback() {
  SetStreamDataCallback(*streamInfo_, kUnregisterDataCallback, receiver_.Get());
  streamInfo_.reset();
}

}  // namespace Tarn::CameraFinding
