#include "protocol/block_receiver.h"

#include <mutex>
#include <new>
#include <utility>

#include "com/com_ptr.h"
#include "platform/threads.h"
#include "protocol/block_format.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

/// What one task owns until it ends. The receiver, and with it currentWizard, outlives the task because the platform
/// library's thread waits inside OnGenericData.
struct Delivery {
  const CurrentWizard& currentWizard;
  Kestrel::ComPtr<INewCameraDataCallback> heldWizard;
  Kestrel::ReferencePointer<Kestrel::Buffer> block;
  std::uint32_t messageType;
};

/// The task, on the worker: parses the block, then lets go of the wizard. The waiting thread lets go of the block, so
/// that the pool's queue, from which it takes the next one, stays in its processor's cache.
void RunDelivery(void* context) {
  auto& delivery = *static_cast<Delivery*>(context);
  ParseFinderBlock(delivery.currentWizard, *delivery.block, delivery.messageType);
  delivery.heldWizard.Reset();
}

void DeliverCameraBlock(Delivery delivery) {
  if (!platform::RunOnWorkerAndWait(RunDelivery, &delivery)) throw std::bad_alloc();
}

}  // namespace

CameraDataInternalCallback::CameraDataInternalCallback(INewCameraDataCallback* callback,
                                                       std::shared_ptr<const void> held)
    : newCameraDataCallback_(callback), held_(std::move(held)) {
  if (callback) callback->AddRef();
}

CameraDataInternalCallback::~CameraDataInternalCallback() {
  CameraDataInternalCallback::OnDetach();
}

void CameraDataInternalCallback::OnGenericData(std::int32_t blockKind, std::uint32_t messageType,
                                               const std::uint8_t* data, std::uint64_t size) {
  if (blockKind != kFinderBlockKind) return;
  // The wizard may release the finder inside the delivery, and with it the last other reference on this receiver.
  const Kestrel::ComPtr<IGenericDataReceivedCallback> self(this);
  Kestrel::ComPtr<INewCameraDataCallback> callback;
  Kestrel::ReferencePointer<Kestrel::Buffer> block;
  {
    const std::lock_guard guard(lock_);
    callback = Kestrel::ComPtr<INewCameraDataCallback>(newCameraDataCallback_.load());
    if (!callback) return;
    block = Kestrel::CreateBuffer(data, size);
  }
  DeliverCameraBlock({newCameraDataCallback_, std::move(callback), std::move(block), messageType});
}

void CameraDataInternalCallback::OnDetach() {
  Kestrel::ComPtr<INewCameraDataCallback> callback;
  {
    const std::lock_guard guard(lock_);
    callback = Kestrel::ComPtr<INewCameraDataCallback>::Attach(newCameraDataCallback_.exchange(nullptr));
  }
  // The callback is released here, outside the lock, because the wizard's object may call back while it is destroyed.
}

}  // namespace Tarn::CameraFinding
