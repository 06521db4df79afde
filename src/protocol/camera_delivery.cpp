#include "protocol/camera_delivery.h"

#include <new>

#include "platform/threads.h"
#include "protocol/block_parser.h"

namespace Tarn::CameraFinding {
namespace {

void RunDelivery(void* context) {
  auto& delivery = *static_cast<CameraBlockDelivery*>(context);
  ParseFinderBlock(delivery.receiver, *delivery.block, delivery.messageType);
  delivery.block.Reset();
  try {
    delivery.callback.Reset();
  } catch (...) {  // the wizard's object may go here, and what its destruction throws is the wizard's matter
  }
}

}  // namespace

void DeliverCameraBlock(CameraBlockDelivery delivery) {
  if (!platform::RunOnWorkerAndWait(RunDelivery, &delivery)) throw std::bad_alloc();
}

}  // namespace Tarn::CameraFinding
