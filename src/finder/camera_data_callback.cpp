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

// Not caught: the platform library would go on calling a receiver that it was told to forget.
CameraDataCallback::~CameraDataCallback() {
  SetStreamDataCallback(*streamInfo_, kUnregisterDataCallback, receiver_.Get());
  streamInfo_.reset();
}

}  // namespace Tarn::CameraFinding
