/// The worst messages we know: the memory that they take stays within 64 times their length and a mebibyte, and the
/// number of allocations grows with their length and no faster. How time grows is printed.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string_view>

#include "base/exception_history.h"
#include "fakes/counting_allocator.h"
#include "robustness/worst_messages.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

class MemoryBound : public WizardTest, public testing::WithParamInterface<WorstMessage> {
 protected:
  MemoryBound() { finder_->SetNewCameraDataCallback(&callback_); }
  void TearDown() override {
    finder_.Reset();
    WizardTest::TearDown();
  }

  void Send(const Bytes& message) { GetParam().Send(dbi, finder_, message); }
  /// The shortest of some runs.
  double SecondsFor(const Bytes& message) {
    double shortest = 1e9;
    for (int i = 0; i < 3; ++i) {
      const auto start = std::chrono::steady_clock::now();
      Send(message);
      shortest = std::min(shortest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return shortest;
  }

 private:
  CountingCallback callback_;
  ComPtr<ICameraFinder> finder_ = MakeFinderBy(GetFindingInterface);
};

TEST_P(MemoryBound, IsKeptAndAllocationsGrowWithTheLength) {
  std::int64_t allocationsBefore = 0;
  for (const std::size_t size : {4096U, 65536U, 131072U, 262144U, 1048576U}) {
    SCOPED_TRACE(size);
    const Bytes message = GetParam().OfSize(size);
    const std::int64_t held = fakes::GetHeapUse().bytes, allocationsSoFar = fakes::CountAllocations();
    fakes::ResetHeapPeak();
    Send(message);
    EXPECT_LE(fakes::GetHeapUse().peak - held, 64 * static_cast<std::int64_t>(message.size()) + (1 << 20));
    const std::int64_t allocations = fakes::CountAllocations() - allocationsSoFar;
    if (size == 131072U || size == 262144U) {
      EXPECT_LE(allocations, allocationsBefore * 5 / 2 + 64);
    }
    allocationsBefore = allocations;
  }
  std::printf("twice the length takes %.2f times as long\n",
              SecondsFor(GetParam().OfSize(524288)) / SecondsFor(GetParam().OfSize(262144)));
}

/// 512 exceptions with a text that the server chose: the history, which the library makes at its load, keeps a part.
TEST_F(WizardTest, LongTextsOfRefusedBlocksDoNotStay) {
  const auto finder = MakeFinderBy(GetFindingInterface);
  CountingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  const auto worst = std::ranges::find(kWorstMessages, std::string_view("NumberIsAText"), &WorstMessage::name);
  const Bytes block = worst->OfSize(1 << 16);
  dbi.Push(3, block);  // fills the pool of buffers
  const Kestrel::ExceptionHistory history;
  const std::int64_t before = fakes::GetHeapUse().bytes;
  for (int i = 0; i < 512; ++i) dbi.Push(3, block);
  EXPECT_EQ(history.Entries().size(), 512U);
  EXPECT_LE(fakes::GetHeapUse().bytes - before, static_cast<std::int64_t>(Kestrel::ExceptionHistory::kMostBytes));
}

INSTANTIATE_TEST_SUITE_P(Worst, MemoryBound, testing::ValuesIn(kWorstMessages),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace wizard
