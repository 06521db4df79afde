/// A signal from one thread to one other, and the wait for it.
#pragma once

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>

#include "platform/linux/placement.h"
#include "platform/linux/task_counts.h"
#include "platform/linux/yield_back_off.h"
#include "platform/processor.h"

namespace platform {

/// A word that the setter sets and the waiter clears. Calls the system only where the waiter sleeps.
class WakeWord {
 public:
  void Set() {
    if (state_.exchange(kSet, std::memory_order_acq_rel) != kAsleep) return;
    syscall(SYS_futex, &state_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  }

  bool IsSet() const { return state_.load(std::memory_order_acquire) == kSet; }

  /// True where the waiter sleeps or is about to. What it wrote before is then visible to the caller.
  bool IsAsleep() const { return state_.load(std::memory_order_acquire) == kAsleep; }

  /// Sleeps until the word is set.
  void Sleep() {
    std::uint32_t seen = kClear;
    state_.compare_exchange_strong(seen, kAsleep, std::memory_order_acq_rel, std::memory_order_acquire);
    while (!IsSet()) syscall(SYS_futex, &state_, FUTEX_WAIT_PRIVATE, kAsleep, nullptr, nullptr, 0);
  }

  void Clear() { state_.store(kClear, std::memory_order_relaxed); }

 private:
  static constexpr std::uint32_t kClear = 0, kSet = 1, kAsleep = 2;

  std::atomic<std::uint32_t> state_{kClear};
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free && sizeof(WakeWord) == sizeof(std::uint32_t),
              "the system reads the word as 32 bits");

/// What a waiter does before it sleeps.
enum class BeforeSleep {
  kNothing,
  kYield,  ///< gives its processor away: where the setter runs on it too, that is half the price of a sleep
  kWatch,  ///< looks at the word for a while: where the setter runs on another processor, no switch is needed
};

class Waiter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Waits from now on until the word is set, and clears it. Returns the time then; where the waiter watched, that is
  /// when it last looked at the clock, up to half a microsecond before. tasks is the count of the processor that the
  /// waiter runs on.
  Time Wait(WakeWord& word, BeforeSleep action, Time now, const TaskCount& tasks) {
    if (action == BeforeSleep::kYield) Yield(word, now, tasks);
    const bool watches = action == BeforeSleep::kWatch;
    if (watches) now = Watch(word, now);
    const bool sleeps = !word.IsSet();
    if (sleeps) word.Sleep();
    word.Clear();
    return watches && !sleeps ? now : Clock::now();
  }

 private:
  using Clock = std::chrono::steady_clock;

  void Yield(const WakeWord& word, Time begin, const TaskCount& tasks) {
    if (word.IsSet() || !backOff_.MayYield(begin)) return;
    const std::uint32_t before = tasks.load(std::memory_order_relaxed);
    sched_yield();
    if (!word.IsSet()) sched_yield();
    backOff_.Count(begin, Clock::now(), tasks.load(std::memory_order_relaxed) - before);
  }

  /// Returns the time when it last looked at the clock.
  static Time Watch(const WakeWord& word, Time begin) {
    constexpr int kLooksPerTime = 8;
    Time now = begin;
    for (; now - begin < kClosely; now = Clock::now()) {
      for (int i = 0; i < kLooksPerTime; ++i) {
        if (word.IsSet()) return now;
        PauseInSpin();
      }
    }
    return now;
  }

  YieldBackOff backOff_;
};

}  // namespace platform
