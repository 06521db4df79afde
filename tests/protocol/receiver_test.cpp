#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <thread>

#include "fakes/fake_debugger.h"
#include "fakes/fake_threads.h"
#include "protocol/camera_data_callback.h"
#include "protocol/samples.h"

namespace Tarn::CameraFinding {
namespace {

class Receiver : public testing::Test {
 protected:
  Receiver() { fakes::ClearDebuggerLines(); }
  ~Receiver() override { fakes::refuseHandOvers = false; }

  void Push(const std::string& sample, std::uint32_t messageType, std::int32_t blockKind = 2) {
    const Bytes block = ReadSample(sample);
    receiver_->OnGenericData(blockKind, messageType, block.data(), block.size());
  }
  /// The reference that the test holds, given up by hand where the wizard gives it up.
  void ReleaseReceiver() { receiver_.Reset(); }

  RecordingWizard wizard_;
  Kestrel::ComPtr<IGenericDataReceivedCallback> receiver_ = Kestrel::ComPtr<IGenericDataReceivedCallback>::Attach(
      Kestrel::MakeComObject<CameraDataCallback::CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard_)
          .Detach());
};

TEST_F(Receiver, DeliversEveryRecordedBlockOnAnotherThreadBeforeItReturns) {
  std::thread::id worker;
  wizard_.onCall = [&] { worker = std::this_thread::get_id(); };
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("block-")) continue;
    SCOPED_TRACE(name);
    wizard_.delivered = nlohmann::json::array();
    worker = std::this_thread::get_id();
    Push(name, expected["messageType"]);
    EXPECT_EQ(wizard_.delivered, expected["delivered"]);
    EXPECT_EQ(worker == std::this_thread::get_id(), wizard_.delivered.empty());
    EXPECT_EQ(wizard_.references, 1U);
    ++played;
  }
  EXPECT_EQ(played, 16);
}

TEST_F(Receiver, DropsBlocksOfOtherKindsAndAfterTheDetachWithoutATask) {
  const int before = fakes::handOvers;
  Push("block-8-gone.bin", 8, 1);
  Push("block-8-gone.bin", 8, 3);
  receiver_->OnDetach();
  EXPECT_EQ(wizard_.references, 0U);
  receiver_->OnDetach();
  Push("block-8-gone.bin", 8);
  EXPECT_EQ(wizard_.delivered.size(), 0U);
  EXPECT_EQ(fakes::handOvers, before);
}

TEST_F(Receiver, KeepsTheWizardAndItselfWhileTheWizardLetsGoFromInside) {
  wizard_.onCall = [&] {
    receiver_->OnDetach();
    ReleaseReceiver();
    EXPECT_EQ(wizard_.references, 1U);  // the task's own
  };
  const Bytes block = ReadSample("block-8-gone.bin");
  receiver_.Get()->OnGenericData(2, 8, block.data(), block.size());
  EXPECT_EQ(wizard_.delivered.size(), 1U);
  EXPECT_EQ(wizard_.references, 0U);
}

TEST_F(Receiver, KeepsWhatTheWizardThrowsToItself) {
  wizard_.onCall = [] { throw std::runtime_error("closed"); };
  Push("block-1-picture.bin", 1);
  Push("block-3-camera.bin", 3);
  EXPECT_TRUE(fakes::DebuggerLines().empty());
  Push("block-2-values.bin", 2);
  EXPECT_EQ(fakes::DebuggerLines(), std::vector<std::u16string>{u"Wizzard wurde schon geschlossen\r\n"});
  EXPECT_EQ(wizard_.delivered.size(), 3U);
  EXPECT_EQ(wizard_.references, 1U);
}

TEST_F(Receiver, ThrowsOutOfMemoryWhereNoWorkerCanBeHad) {
  fakes::refuseHandOvers = true;
  EXPECT_THROW(Push("block-8-gone.bin", 8), std::bad_alloc);
  EXPECT_EQ(wizard_.references, 1U);
  fakes::refuseHandOvers = false;
  Push("block-8-gone.bin", 8);
  EXPECT_EQ(wizard_.delivered.size(), 1U);
}

TEST_F(Receiver, TakesBlocksAndADetachOnSeveralThreads) {
  std::thread other([&] {
    for (int i = 0; i < 50; ++i) receiver_->OnGenericData(2, 9, nullptr, 0);
    receiver_->OnDetach();
  });
  for (int i = 0; i < 50; ++i) receiver_->OnGenericData(2, 1, nullptr, 0);
  other.join();
  EXPECT_EQ(wizard_.references, 0U);
}

}  // namespace
}  // namespace Tarn::CameraFinding
