#include "valuelist/buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <future>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "fakes/counting_allocator.h"
#include "thrown.h"
#include "valuelist/buffer_pool.h"

namespace Kestrel {
namespace {

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();

TEST(Buffer, GrowsByHalfOfWhatIsNeededInPages) {
  const std::pair<std::vector<std::size_t>, std::uint64_t> rows[] = {
      {{0}, 0}, {{2731}, 4096}, {{2732}, 8192}, {{10, 4086}, 4096}, {{10, 4086, 1}, 8192}, {{43692}, 69632}};
  for (const auto& [sizes, capacity] : rows) {
    Buffer buffer;
    for (const std::size_t n : sizes) buffer.Append(std::string(n, 'x').data(), n);
    EXPECT_EQ(buffer.GetCapacity(), capacity);
    EXPECT_TRUE(std::ranges::equal(buffer.GetBytes(), std::string(std::reduce(sizes.begin(), sizes.end()), 'x')));
  }
}

TEST(Buffer, IsLeftWithoutStorageWhereItCannotGrow) {
  // how many more bytes, what is asked of the heap for them, and which allocation it refuses
  for (const auto& [added, allocation, failing] : {std::tuple(kHuge, "18446744073709551615", 0),
                                                   {kHuge - 1, "18446744073709551615", 0},
                                                   {kHuge / 3, "18446744073709551615", 0},
                                                   {kHuge / 3 - 1, "9223372036854775808", 0},
                                                   {5000, "8192", 1}}) {
    Buffer buffer;
    buffer.Append("a", 1);
    const auto grow = [&buffer, added = added, failing = failing] {
      const fakes::FailingAllocation failure(failing);
      buffer.Reserve(added);
    };
    EXPECT_EQ(ErrorOf(grow), std::string("OutOfMemoryException: Out of memory during allocation of ") + allocation +
                                 " bytes in FlatMemory");
    EXPECT_TRUE(buffer.GetCapacity() == 0 && buffer.GetLength() == 0 && !buffer.GetData());
  }
}

TEST(BufferPoolList, TakesBuffersOfItsCapacityUpToItsLimits) {
  const auto& statistics = GetBufferStatistics();
  for (const auto& [index, capacity, returned, kept] :
       {std::tuple(SmallBufferList, 0u, 257u, 256u), std::tuple(SmallBufferList, 8192u, 256u, 256u),
        std::tuple(SmallBufferList, 61440u, 35u, 34u), std::tuple(MediumBufferList, 65536u, 17u, 16u),
        std::tuple(MediumBufferList, 393216u, 16u, 16u), std::tuple(MediumBufferList, 397312u, 16u, 15u),
        std::tuple(MediumBufferList, 520192u, 13u, 12u), std::tuple(LargeBufferList, 524288u, 5u, 4u),
        std::tuple(LargeBufferList, 3145728u, 1u, 1u), std::tuple(LargeBufferList, 3149824u, 1u, 0u)}) {
    SCOPED_TRACE(testing::Message() << index << " " << capacity);
    EXPECT_EQ(BufferPool::ListFor(capacity), index);
    const std::uint64_t refused = statistics.refusedReturns;
    const std::int64_t live = statistics.liveBlocks;
    {
      BufferPool pool;
      BufferPoolList& list = pool.GetList(index);
      for (std::uint32_t i = 0; i < returned; ++i) {
        auto buffer = std::make_unique<Buffer>();
        buffer->Reserve(capacity * 2 / 3);
        if (list.Keep(*buffer)) buffer.release();
      }
      EXPECT_EQ(list.GetCount(), kept);
      EXPECT_EQ(list.GetBytesHeld(), kept * capacity);
      EXPECT_EQ(statistics.liveBlocks - live, static_cast<std::int64_t>(kept));
      EXPECT_EQ(statistics.refusedReturns - refused, returned - kept);
    }
    EXPECT_EQ(statistics.liveBlocks, live);
  }
}

TEST(Buffer, OfAnExactSizeGrowsOutOfItsOwnAllocation) {
  const auto buffer = Buffer::CreateExact(3);
  std::memcpy(buffer->GetData(), "abc", 3);
  EXPECT_EQ(buffer->GetCapacity(), 3u);
  buffer->Append("def", 3);
  EXPECT_EQ(buffer->GetCapacity(), 4096u);
  EXPECT_EQ(std::memcmp(buffer->GetData(), "abcdef", 6), 0);
}

/// So that the shared pool has room, whatever ran before.
void EmptySharedPool() {
  for (const auto index : {SmallBufferList, MediumBufferList, LargeBufferList}) {
    BufferPoolList& list = BufferPool::GetPool()->GetList(index);
    // Grown above what a list keeps, so that its release deletes it.
    while (list.GetCount() > 0) list.GetBuffer()->Reserve(kBufferPoolLimits[LargeBufferList].largestCapacity);
  }
}

TEST(BufferPoolList, RecyclesFirstInFirstOut) {
  BufferPoolList list(kBufferPoolLimits[SmallBufferList]);
  std::deque<Buffer*> expected;
  std::mt19937 random(1126);
  for (int i = 0; i < 5000; ++i) {
    if (random() % 2 == 0) {
      auto* const buffer = new Buffer;
      ASSERT_TRUE(list.Keep(*buffer));
      expected.push_back(buffer);
    } else if (!expected.empty()) {
      ASSERT_EQ(list.GetBuffer().Get(), expected.front()) << i;
      expected.pop_front();
    }
    ASSERT_EQ(list.GetCount(), expected.size());
  }
  list.Close();
  Buffer late;
  EXPECT_FALSE(list.Keep(late));
  EXPECT_EQ(list.GetCount(), 0u);
}

TEST(BufferQueue, HoldsNoMoreThanItsCallerAllows) {
  BufferQueue queue;
  queue.Open(8);
  Buffer buffers[3];
  for (Buffer& buffer : buffers) buffer.Reserve(2000);  // of one page
  EXPECT_TRUE(queue.PutBack(buffers[0], 2, 8192));
  EXPECT_FALSE(queue.PutBack(buffers[1], 2, 8191));
  EXPECT_TRUE(queue.PutBack(buffers[1], 2, 8192));
  EXPECT_FALSE(queue.PutBack(buffers[2], 2, 12288));
  EXPECT_EQ(queue.TakeFront(), &buffers[0]);
  EXPECT_EQ(queue.TakeFront(), &buffers[1]);
  EXPECT_EQ(queue.TakeFront(), nullptr);  // or else the queue would delete it
}

TEST(BufferQueue, LosesNothingAmongThreads) {
  BufferQueue queue;
  queue.Open(8);
  std::atomic<std::uint32_t> expected{0};
  const auto moveBuffers = [&](unsigned seed) {
    std::minstd_rand random(seed);
    std::vector<std::unique_ptr<Buffer>> own;
    for (unsigned i = 0; i < 3; ++i) own.emplace_back(std::make_unique<Buffer>())->Reserve(4000 * seed);
    for (int i = 0; i < 20'000; ++i) {
      if (random() % 2 == 0) {
        if (Buffer* const taken = queue.TakeFront()) own.emplace_back(taken);
      } else if (!own.empty() && queue.PutBack(*own.back(), 8, 1 << 20)) {
        own.back().release();
        own.pop_back();
      }
    }
    expected -= static_cast<std::uint32_t>(own.size());
  };
  expected = 4 * 3;
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 4; ++seed) threads.emplace_back(moveBuffers, seed);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(queue.GetCount(), expected);
  std::uint64_t bytes = queue.GetBytesHeld();
  while (const std::unique_ptr<Buffer> buffer{queue.TakeFront()}) bytes -= buffer->GetCapacity();
  EXPECT_EQ(bytes, 0u);
}

TEST(BufferPoolList, RecyclesWithStorageAndUseCount) {
  EmptySharedPool();
  BufferPoolList list(kBufferPoolLimits[SmallBufferList]);
  auto* const first = new Buffer;
  first->Append("abc", 3);
  first->Take(2);
  EXPECT_TRUE(list.Keep(*first));
  ReferencePointer<Buffer> again = list.GetBuffer();
  EXPECT_EQ(again.Get(), first);
  EXPECT_TRUE(again->GetLength() == 0 && again->GetReadPosition() == 0 && again->GetCapacity() == 4096);
  EXPECT_EQ(again->GetUseCount(), 1u);
  again.Reset();  // to the shared pool
  again = GetBuffer(SmallBufferList);
  EXPECT_EQ(again.Get(), first);
  EXPECT_EQ(again->GetUseCount(), 2u);
  again->Reset();
  EXPECT_EQ(again->GetUseCount(), 0u);
}

TEST(BufferPoolList, ServesAllThreadsFromAllItsQueues) {
  BufferPoolList list(kBufferPoolLimits[SmallBufferList]);
  std::atomic<int> alive{0};  // all at once, so that each has a place of its own
  const auto returnMany = [&] {
    for (++alive; alive < 4;) std::this_thread::yield();
    for (int i = 0; i < 256; ++i)
      if (auto buffer = std::make_unique<Buffer>(); list.Keep(*buffer)) buffer.release();
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(returnMany);
  for (std::thread& thread : threads) thread.join();
  const std::size_t kept = list.GetCount();
  EXPECT_TRUE(kept >= 256 && kept < 512) << kept;
  std::vector<ReferencePointer<Buffer>> taken;
  for (std::size_t i = 0; i < kept; ++i) taken.push_back(list.GetBuffer());
  EXPECT_EQ(list.GetCount(), 0u);
}

/// What the shared pool has more than before.
std::vector<std::size_t> Gained(const std::vector<std::size_t>& before = {0, 0, 0}) {
  std::vector<std::size_t> counts;
  for (const auto list : {SmallBufferList, MediumBufferList, LargeBufferList})
    counts.push_back(BufferPool::GetPool()->GetList(list).GetCount() - before[list]);
  return counts;
}

TEST(BufferPool, TakesByTheSizeAndReturnsByTheCapacity) {
  constexpr std::size_t kSizeThatStays[] = {10, 70'000, 600'000};
  EmptySharedPool();
  for (const auto& [bytes, taken, returned] :
       {std::tuple(40'000u, SmallBufferList, SmallBufferList), std::tuple(65'535u, SmallBufferList, MediumBufferList),
        std::tuple(65'536u, MediumBufferList, MediumBufferList),
        std::tuple(524'287u, MediumBufferList, LargeBufferList),
        std::tuple(524'288u, LargeBufferList, LargeBufferList)}) {
    SCOPED_TRACE(bytes);
    const std::string source(600'000, 'x');
    CreateBuffer(source.data(), kSizeThatStays[taken]);  // so that one waits there
    const std::vector<std::size_t> before = Gained();
    std::vector<std::size_t> expected(3);
    auto buffer = CreateBuffer(source.data(), bytes);
    --expected[taken];
    EXPECT_EQ(Gained(before), expected);
    buffer.Reset();
    ++expected[returned];
    EXPECT_EQ(Gained(before), expected);
  }
}

TEST(BufferPool, IsPrivateOnceTheSharedOneIsClosed) {
  const auto useAfterClosing = [] {
    const ReferencePointer<Buffer> early = CreateBuffer("a", 1);
    const std::int64_t live = GetBufferStatistics().liveBlocks;
    BufferPool::DestroySharedPool();
    const auto pool = BufferPool::GetPool();
    const bool privatePools = pool != BufferPool::GetPool();
    GetBuffer(SmallBufferList);
    pool->GetBuffer(SmallBufferList);
    std::exit(privatePools && live > 1 && GetBufferStatistics().liveBlocks == 1 && *early->GetData() == 'a' ? 0 : 1);
  };
  // Two at once, so that one waits in the shared pool while the other is in use.
  { const auto first = GetBuffer(SmallBufferList), second = GetBuffer(SmallBufferList); }
  EXPECT_EXIT(useAfterClosing(), testing::ExitedWithCode(0), "");
}

TEST(BufferPool, GivesEachBufferToOneThread) {
  const auto use = [](char letter) {
    for (std::size_t i = 0; i < 2000; ++i) {
      const std::string block(i % 3 == 0 ? 50000 : 100, letter);
      const auto a = CreateBuffer(block.data(), block.size()), b = a;
      ReferencePointer<Buffer> c;
      std::memcpy(ReserveAtEnd(c, 10), "0123456789", 10);
      if (ReserveAtEnd(c, 5) != c->GetData() || c->GetLength() != 5) return false;
      if (std::memcmp(a->GetData(), block.data(), block.size()) != 0 || a->GetLength() != block.size()) return false;
    }
    return true;
  };
  std::vector<std::future<bool>> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) threads.push_back(std::async(std::launch::async, use, letter));
  for (auto& thread : threads) EXPECT_TRUE(thread.get());
}

}  // namespace
}  // namespace Kestrel
