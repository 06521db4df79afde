#include "valuelist/buffer_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <future>
#include <string>
#include <vector>

#include "fakes/counting_allocator.h"

namespace Kestrel {
namespace {

TEST(BufferPool, RoutesByCapacity) {
  const std::pair<std::uint64_t, BufferPoolListIndex> rows[] = {
      {65535, SmallBufferList}, {65536, MediumBufferList}, {524287, MediumBufferList}, {524288, LargeBufferList}};
  for (const auto& [bytes, index] : rows) {
    EXPECT_EQ(BufferPool::ListFor(bytes), index);
    BufferPoolList& list = BufferPool::GetPool()->GetList(index);
    const std::uint64_t held = list.GetBytesHeld();
    ReferencePointer<Buffer>(new Buffer)->Reserve(bytes / 4096 * 4096 * 2 / 3);
    EXPECT_EQ(list.GetBytesHeld(), held + bytes / 4096 * 4096);
  }
}

TEST(BufferPoolList, DeletesAndCountsWhatIsBeyondItsLimits) {
  struct Row {
    BufferPoolListIndex index;
    std::uint64_t capacity;
    std::size_t returned, kept;
  };
  const auto& statistics = GetBufferStatistics();
  for (const auto& [index, capacity, returned, kept] :
       {Row{SmallBufferList, 0, 257, 256}, Row{SmallBufferList, 61440, 35, 34}, Row{MediumBufferList, 65536, 17, 16},
        Row{MediumBufferList, 520192, 13, 12}, Row{LargeBufferList, 524288, 5, 4}, Row{LargeBufferList, 3145728, 1, 1},
        Row{LargeBufferList, 3149824, 1, 0}, Row{LargeBufferList, 4194304, 1, 0}}) {
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
  std::int64_t before = 0;
  for (int i = 0; i < 1000; ++i) {
    if (i == 500) before = fakes::CountAllocations();  // every buffer in the list has its storage by then
    ReferencePointer<Buffer> copy = CreateBuffer("abc", 3), other;
    ReserveAtEnd(other, 7);
    ASSERT_EQ(ReserveAtEnd(other, 5), other->GetData());
  }
  EXPECT_EQ(fakes::CountAllocations(), before);
}

TEST(BufferPool, GivesEachBufferToOneThread) {
  std::vector<std::future<bool>> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.push_back(std::async(std::launch::async, [letter] {
      bool intact = true;
      for (std::size_t i = 0; i < 2000; ++i) {
        const std::string block(i % 3 == 0 ? 60000 : 100, letter);
        const auto a = CreateBuffer(block.data(), block.size()), b = a, c = GetBuffer(SmallBufferList);
        c->Append("0123456789", 10);
        intact = intact && std::ranges::equal(a->GetBytes(), block);
      }
      return intact;
    }));
  }
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
