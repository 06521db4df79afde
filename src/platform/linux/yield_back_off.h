/// When a waiter that yields its processor has to stop, because another program has it meanwhile.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace platform {

/// For one thread. Never reads the clock itself.
class YieldBackOff {
 public:
  using Time = std::chrono::steady_clock::time_point;

  bool MayYield(Time now) const { return now >= pausedUntil_; }

  /// Counts a yield from begin to end. tasks: how many tasks of this process's workers ran on the processor meanwhile.
  void Count(Time begin, Time end, std::uint32_t tasks) {
    if (end - begin <= kTooLong * (1 + std::int64_t{tasks})) return;
    pausedUntil_ = end + pause_;
    pause_ = std::min<std::chrono::nanoseconds>(2 * pause_, kLongestPause);
  }

 private:
  /// Where yielding took longer than this for each task that ran meanwhile, another program had the processor, because
  /// the scheduler lets a program run for milliseconds. Then the waiter does not yield for a pause, and the next pause
  /// is twice as long. Where other hand-overs had the processor, yielding goes on: pairs of threads that take turns of
  /// milliseconds need half the time of pairs that sleep.
  static constexpr std::chrono::microseconds kTooLong{100};
  static constexpr std::chrono::milliseconds kFirstPause{16};
  static constexpr std::chrono::seconds kLongestPause{2};

  Time pausedUntil_{};
  std::chrono::nanoseconds pause_ = kFirstPause;
};

}  // namespace platform
