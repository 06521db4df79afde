#include "finder/camera_data_callback.h"

#include <utility>

#include "platform/modules.h"

namespace Tarn::CameraFinding {

CameraDataCallback::CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo)
    : receiver_(Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(callback)),
      streamInfo_(std::move(streamInfo)) {
  SetStreamDataCallback(*streamInfo_, kRegisterDataCallback, receiver_.Get());
}

// Not caught: the platform library would go on calling a receiver that it was told to forget.
CameraDataCallback::~CameraDataCallback() {
  SetStreamDataCallback(*streamInfo_, kUnregisterDataCallback, receiver_.Get());
  streamInfo_.reset();
  // Somebody else still holds the receiver: a block is being delivered, or about to be. The wizard may unload the
  // library as soon as it has released the finder, and neither can wait for the other: the wizard's callback may need
  // the loader's lock, which is held while a library is unloaded. So the threads inside must find the code in its
  // place.
  if (!receiver_->HasOneReference()) platform::KeepThisModuleLoaded();
}

}  // namespace Tarn::CameraFinding
