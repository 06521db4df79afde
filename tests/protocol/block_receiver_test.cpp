#include "protocol/block_receiver.h"

#include <gtest/gtest.h>

#include <new>
#include <thread>
#include <utility>

#include "platform/threads.h"
#include "protocol/recording_wizard.h"

namespace {

int handOvers = 0;
bool refuseHandOvers = false;

}  // namespace

namespace platform {

std::uint32_t ThreadPlace() {
  return 0;
}
std::uint32_t GetCurrentThreadId() {
  return 0;
}
bool RunOnWorkerAndWait(void (*task)(void*), void* context) {
  if (refuseHandOvers) return false;
  ++handOvers;
  std::thread(task, context).join();
  return true;
}
void StopWorkers() {}

}  // namespace platform

namespace Tarn::CameraFinding {
namespace {

TEST(Receiver, HandsOnlyItsOwnBlocksOverAndOnlyWhileTheWizardIsThere) {
  const int before = handOvers;
  RecordingWizard wizard;
  const auto receiver = Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard);
  const Bytes block = ReadSample("block-8-gone.bin");
  const auto push = [&](std::int32_t kind) { receiver->OnGenericData(kind, 8, block.data(), block.size()); };
  push(1);
  push(3);
  EXPECT_EQ(handOvers, before);
  refuseHandOvers = true;
  EXPECT_THROW(push(2), std::bad_alloc);
  EXPECT_EQ(wizard.references, 1U);
  refuseHandOvers = false;
  push(2);
  EXPECT_EQ(std::exchange(wizard.delivered, ""),
            "||||||AC:CC:8E:00:00:08|&!*KVMR*9%|&!*KVMR*9%|UNKNOWN||100007|24|0|18446744073709551615 kind 4 type 24");
  wizard.releaseThrows = true;  // which reaches nobody: after a delivery, at OnDetach, at the receiver's end
  push(2);
  EXPECT_EQ(wizard.references, 1U);
  Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard);
  EXPECT_EQ(wizard.references, 1U);
  receiver->OnDetach();
  push(2);
  EXPECT_EQ(handOvers, before + 2);
  EXPECT_EQ(wizard.references, 0U);
}

}  // namespace
}  // namespace Tarn::CameraFinding
