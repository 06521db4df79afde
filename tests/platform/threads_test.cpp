#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <set>
#include <thread>
#include <vector>

#include "platform/hand_over.h"

using namespace platform;

namespace {

class Workers : public testing::Test {
 protected:
  ~Workers() override { StopWorkers(); }
};

TEST_F(Workers, TasksRunOnOtherThreadsAndIdleOnesAreUsedAgain) {
  std::set<std::uint32_t> threads;
  for (int i = 0; i < 200; ++i) {
    ASSERT_TRUE(HandOver([&] { threads.insert(GetCurrentThreadId()); }));
    ASSERT_FALSE(threads.empty()) << "it must have run when the call returns";
  }
  EXPECT_FALSE(threads.contains(GetCurrentThreadId()));
  EXPECT_LE(threads.size(), 10U) << "a pool may start one before the last has come back";
}

/// Each of the waiting tasks keeps its thread and holds up nobody else.
TEST_F(Workers, TasksNestFarDeeperThanThereAreProcessors) {
  std::set<std::uint32_t> threads;
  int depth = 0;
  std::function<void()> nest = [&] {
    threads.insert(GetCurrentThreadId());
    if (++depth == 550) return;
    EXPECT_TRUE(HandOver(nest));
  };
  ASSERT_TRUE(HandOver(nest));
  EXPECT_EQ(depth, 550);
  EXPECT_EQ(threads.size(), 550U);
}

TEST_F(Workers, ManyDeliverersEachSeeTheirOwnTask) {
  std::vector<std::thread> deliverers;
  std::atomic<int> wrong{0};
  for (int d = 0; d < 8; ++d)
    deliverers.emplace_back([&wrong, d] {
      for (int i = 0; i < 2000; ++i) {
        int seen = -1;  // not atomic: the hand-over itself has to order the accesses
        if (!HandOver([&] { seen = d * 10000 + i; }) || seen != d * 10000 + i) ++wrong;
      }
    });
  for (std::thread& deliverer : deliverers) deliverer.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(Workers, StopLeavesNothingAndTheNextTaskStartsAnew) {
  StopWorkers();
  for (int cycle = 0; cycle < 50; ++cycle) {
    bool ran = false;
    ASSERT_TRUE(HandOver([&] { ASSERT_TRUE(HandOver([&] { ran = true; })); }));
    EXPECT_TRUE(ran);
    StopWorkers();
  }
}

}  // namespace
