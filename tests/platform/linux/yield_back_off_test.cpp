#include "platform/linux/yield_back_off.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

constexpr YieldBackOff::Time kBegin{1s};

TEST(YieldBackOff, StopsWhereAnotherProgramHadTheProcessor) {
  const struct {
    std::chrono::microseconds taken;
    std::uint32_t tasks;
    bool mayYield;
  } rows[] = {{100us, 0, true}, {101us, 0, false}, {3000us, 1200, true}, {3000us, 29, true}, {3000us, 28, false}};
  for (const auto& row : rows) {
    YieldBackOff backOff;
    const auto end = kBegin + row.taken;
    backOff.Count(kBegin, end, row.tasks);
    EXPECT_EQ(backOff.MayYield(end), row.mayYield) << row.taken.count() << " us, " << row.tasks << " tasks";
    EXPECT_TRUE(backOff.MayYield(end + 16ms));
  }
}

TEST(YieldBackOff, PausesDoubleUpToTwoSeconds) {
  YieldBackOff backOff;
  auto now = kBegin;
  for (const auto pause : {16ms, 32ms, 64ms, 128ms, 256ms, 512ms, 1024ms, 2000ms, 2000ms}) {
    backOff.Count(now, now + 1ms, 0);
    now += 1ms + pause;
    EXPECT_FALSE(backOff.MayYield(now - 1ns)) << pause.count() << " ms";
    EXPECT_TRUE(backOff.MayYield(now)) << pause.count() << " ms";
  }
}

}  // namespace
