#include "valuelist/buffer_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <future>
#include <vector>

#include "fakes/counting_allocator.h"

namespace Kestrel {
namespace {

TEST(BufferPool, RoutesByCapacity) {
  const std::pair<std::uint64_t, BufferPoolListIndex> rows[] = {
      {0, SmallBufferList},       {65535, SmallBufferList},  {65536, MediumBufferList},
      {524287, MediumBufferList}, {524288, LargeBufferList}, {4194304, LargeBufferList},
  };
  for (const auto& [bytes, list] : rows) EXPECT_EQ(BufferPool::ListFor(bytes), list) << bytes;
  for (const std::uint64_t capacity : {0x1000u, 0x10000u, 0x80000u}) {
    BufferPoolList& list = BufferPool::GetPool()->GetList(BufferPool::ListFor(capacity));
    const std::uint64_t held = list.GetBytesHeld();
    ReferencePointer<Buffer>(new Buffer)->Reserve(capacity * 2 / 3);
    EXPECT_EQ(list.GetBytesHeld(), held + capacity);
  }
}

TEST(BufferPoolList, DeletesAndCountsWhatIsBeyondItsLimits) {
  struct Row {
    BufferPoolListIndex list;
    std::uint64_t capacity;
    std::size_t returned, kept;
  };
  const Row rows[] = {
      {SmallBufferList, 0, 257, 256},      // by count
      {SmallBufferList, 61440, 35, 34},    // by bytes
      {MediumBufferList, 65536, 17, 16},   // by count
      {MediumBufferList, 520192, 13, 12},  // by bytes
      {LargeBufferList, 524288, 5, 4},     // by count
      {LargeBufferList, 0x300000, 1, 1},   // the largest
      {LargeBufferList, 0x301000, 1, 0},   // a page more
      {LargeBufferList, 0x400000, 1, 0},
  };
  const BufferStatistics& statistics = GetBufferStatistics();
  for (const auto& [index, capacity, returned, kept] : rows) {
    SCOPED_TRACE(testing::Message() << index << " " << capacity);
    const std::uint64_t refused = statistics.refusedReturns;
    const std::int64_t live = statistics.liveBlocks;
    {
      BufferPoolList list(kBufferPoolLimits[index]);
      std::vector<ReferencePointer<Buffer>> buffers(returned);
      for (auto& buffer : buffers) (buffer = list.GetBuffer())->Reserve(capacity * 2 / 3);
      for (auto& buffer : buffers) list.Return(std::move(buffer));
      EXPECT_EQ(list.GetCount(), kept);
      EXPECT_EQ(list.GetBytesHeld(), kept * capacity);
      EXPECT_EQ(statistics.liveBlocks - live, static_cast<std::int64_t>(kept));
      EXPECT_EQ(statistics.refusedReturns - refused, returned - kept);
    }
    EXPECT_EQ(statistics.liveBlocks, live);
  }
}

TEST(BufferPoolList, RecyclesFirstInFirstOutWithStorageAndUseCount) {
  BufferPoolList list(kBufferPoolLimits[SmallBufferList]);
  ReferencePointer<Buffer> first = list.GetBuffer(), second = list.GetBuffer();
  const Buffer* const expected = first.Get();
  first->Append("abc", 3);
  first->Take(2);
  list.Return(std::move(first));
  list.Return(std::move(second));
  const ReferencePointer<Buffer> again = list.GetBuffer();
  EXPECT_EQ(again.Get(), expected);
  EXPECT_TRUE(again->GetLength() == 0 && again->GetReadPosition() == 0 && again->GetCapacity() == 4096);
  EXPECT_EQ(again->GetUseCount(), 2u);
  again->Reset();
  EXPECT_EQ(again->GetUseCount(), 0u);
}

TEST(BufferPool, NeverAllocatesInTheSteadyState) {
  const auto allocationsOfTwoBuffers = [block = std::vector<std::uint8_t>(1024)] {
    const std::int64_t before = fakes::CountAllocations();
    ReferencePointer<Buffer> copy = CreateBuffer(block.data(), block.size()), other;
    ReserveAtEnd(other, 7);
    EXPECT_EQ(ReserveAtEnd(other, 5), other->GetData());
    return fakes::CountAllocations() - before;
  };
  for (int i = 0; i < 256; ++i) allocationsOfTwoBuffers();  // every buffer in the list gets its storage
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(allocationsOfTwoBuffers(), 0);
}

TEST(BufferPool, GivesEachBufferToOneThread) {
  std::promise<void> start;
  const std::shared_future<void> started = start.get_future().share();
  std::vector<std::future<bool>> threads(4);
  for (std::size_t thread = 0; thread < threads.size(); ++thread) {
    threads[thread] = std::async(std::launch::async, [thread, started] {
      started.wait();
      bool intact = true;
      for (std::size_t i = 0; i < 2000; ++i) {
        const std::vector<std::uint8_t> block(i % 3 == 0 ? 60000 : 100,
                                              static_cast<std::uint8_t>(thread * 50 + i % 50));
        const auto a = CreateBuffer(block.data(), block.size()), b = a, c = GetBuffer(SmallBufferList);
        c->Append("0123456789", 10);
        intact = intact && std::ranges::equal(a->GetBytes(), block);
      }
      return intact;
    });
  }
  start.set_value();
  for (auto& thread : threads) EXPECT_TRUE(thread.get());
}

TEST(BufferPoolDeathTest, FreesEverythingAfterItsEnd) {
  const auto everythingIsFreed = [] {
    const auto& live = GetBufferStatistics().liveBlocks;
    ReferencePointer<Buffer> late = GetBuffer(SmallBufferList);
    BufferPool::DestroySharedPool();
    const bool keepsWhatIsInUse = live == 1;
    late.Reset();
    CreateBuffer("abc", 3);
    return keepsWhatIsInUse && live == 0 && BufferPool::GetPool() != BufferPool::GetPool();
  };
  EXPECT_EXIT(std::exit(everythingIsFreed() ? 7 : 1), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace Kestrel
