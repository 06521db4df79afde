#include "platform/linux/placement.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

/// A deliverer on a made-up clock.
struct HandOvers {
  Placement placement;
  Placement::Time now{1s};
  int apart = 0;

  /// count hand-overs, each with a pause before it.
  void Run(int count, std::chrono::nanoseconds beside, std::chrono::nanoseconds whenApart,
           std::chrono::nanoseconds pause = 0us) {
    apart = 0;
    for (int i = 0; i < count; ++i) {
      now += pause;
      const bool isApart = placement.NextIsApart(now);
      now += isApart ? whenApart : beside;
      apart += isApart;
      placement.Count(now);
    }
  }
};

TEST(Placement, WhatIsMostlyChosen) {
  constexpr int kMany = 100'000;
  const struct {
    const char* name;
    std::chrono::nanoseconds beside, whenApart, pause;
    int least, most;
  } rows[] = {{"apart pays", 2us, 1us, 0us, kMany * 9 / 10, kMany},
              {"apart pays little", 2us, 1'900ns, 0us, 1, kMany / 100},
              {"apart is far slower", 2us, 5ms, 0us, 1, 50},
              {"the deliverer's own work counts too", 2us, 1us, 20us, 1, kMany / 50},
              {"rests between", 2us, 1us, 1ms, 0, 0}};
  for (const auto& row : rows) {
    HandOvers handOvers;
    handOvers.Run(kMany, row.beside, row.whenApart, row.pause);
    EXPECT_GE(handOvers.apart, row.least) << row.name;
    EXPECT_LE(handOvers.apart, row.most) << row.name;
  }
}

TEST(Placement, FollowsWhatPaysNow) {
  HandOvers handOvers;
  handOvers.Run(10'000, 2us, 1us);
  handOvers.Run(1, 2us, 1us, 1ms);
  EXPECT_EQ(handOvers.apart, 0) << "after a rest";
  handOvers.Run(100, 2us, 1us);
  EXPECT_GT(handOvers.apart, 50) << "soon again";
  handOvers.Run(1, 2us, 5ms);
  handOvers.Run(100, 2us, 5ms);
  EXPECT_EQ(handOvers.apart, 0) << "one hand-over that takes long is enough";
  handOvers.Run(10'000, 2us, 1us);
  EXPECT_GT(handOvers.apart, 5'000) << "pays again";
}

/// As on a machine with one processor, where turns with other threads can make apart look faster.
TEST(Placement, WhatIsRefusedIsTriedSeldom) {
  HandOvers handOvers;
  int tries = 0;
  for (int i = 0; i < 100'000; ++i) {
    if (handOvers.placement.NextIsApart(handOvers.now)) {
      ++tries;
      handOvers.placement.Refuse(handOvers.now);
    }
    handOvers.Run(1, 2us, 1us);
    EXPECT_EQ(handOvers.apart, 0);
  }
  EXPECT_GE(tries, 2);
  EXPECT_LE(tries, 10) << "in 200 ms";
}

}  // namespace
