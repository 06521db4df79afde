#include "protocol/block_receiver.h"

#include <mutex>
#include <utility>

#include "protocol/camera_delivery.h"
#include "protocol/block_parser.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {

CameraDataCallback::CameraDataInternalCallback::CameraDataInternalCallback(INewCameraDataCallback* callback)
    : newCameraDataCallback_(callback) {
  if (callback) callback->AddRef();
}

CameraDataCallback::CameraDataInternalCallback::~CameraDataInternalCallback() {
  CameraDataInternalCallback::OnDetach();
}

void CameraDataCallback::CameraDataInternalCallback::OnGenericData(std::int32_t blockKind, std::uint32_t messageType,
                                                                   const std::uint8_t* data, std::uint64_t size) {
  if (blockKind != kFinderBlockKind) return;
  // The wizard may release the finder, and with it this receiver, before the block is delivered.
  const Kestrel::ComPtr<IGenericDataReceivedCallback> self(this);
  Kestrel::ComPtr<INewCameraDataCallback> callback;
  Kestrel::ReferencePointer<Kestrel::Buffer> block;
  {
    const std::lock_guard guard(lock_);
    callback = Kestrel::ComPtr<INewCameraDataCallback>(newCameraDataCallback_.load());
    if (!callback) return;
    block = Kestrel::CreateBuffer(data, size);
  }
  DeliverCameraBlock({*this, std::move(callback), std::move(block), messageType});
}

void CameraDataCallback::CameraDataInternalCallback::OnDetach() {
  Kestrel::ComPtr<INewCameraDataCallback> callback;
  {
    const std::lock_guard guard(lock_);
    callback = Kestrel::ComPtr<INewCameraDataCallback>::Attach(newCameraDataCallback_.exchange(nullptr));
  }
  // Let go here, outside the lock: the wizard's object may call back from its destructor.
}

}  // namespace Tarn::CameraFinding
