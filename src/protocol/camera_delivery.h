/// The hand-over of a received block to a worker thread.
#pragma once

#include <cstdint>

#include "base/reference_counting.h"
#include "com/com_ptr.h"
#include "protocol/block_receiver.h"
#include "valuelist/buffer.h"

namespace Tarn::CameraFinding {

/// What one task owns until it ends: the wizard's callback, the private copy of the block, and, because the delivery
/// thread waits, the receiver.
struct CameraBlockDelivery {
  CameraDataCallback::CameraDataInternalCallback& receiver;
  Kestrel::ComPtr<INewCameraDataCallback> callback;
  Kestrel::ReferencePointer<Kestrel::Buffer> block;
  std::uint32_t messageType;
};

/// Parses and delivers the block on a worker thread, lets go of block and callback there, and returns when that is
/// done. Throws std::bad_alloc where no worker can be had; never what the parse or the wizard throws.
void DeliverCameraBlock(CameraBlockDelivery delivery);

}  // namespace Tarn::CameraFinding
