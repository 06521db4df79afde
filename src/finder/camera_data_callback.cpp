#include "protocol/camera_data_callback.h"

#include <utility>

#include "finder/live_stream.h"

namespace Tarn::CameraFinding {

CameraDataCallback::CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo)
    : wrapper_(Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(callback)),
      streamInfo_(std::move(streamInfo)) {
  SetStreamDataCallback(*streamInfo_, kRegisterDataCallback, wrapper_.Get());
}

// Not caught: the platform library would go on calling a receiver that it was told to forget.
CameraDataCallback::~CameraDataCallback() {
  SetStreamDataCallback(*streamInfo_, kUnregisterDataCallback, wrapper_.Get());
  streamInfo_.reset();
}

}  // namespace Tarn::CameraFinding
