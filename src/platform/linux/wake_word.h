/// A signal from one thread to one other, and the wait for it.
#pragma once

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>

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

/// A waiter that gives its processor away before it sleeps: where the setter runs on the same processor, that is half
/// the price of a sleep and a wake-up. It never spins.
class YieldingWaiter {
 public:
  /// Returns when the word is set, which it clears.
  void Wait(WakeWord& word) {
    if (!word.IsSet()) Yield(word);
    if (!word.IsSet()) word.Sleep();
    word.Clear();
    lastEnd_ = Clock::now();
  }

 private:
  using Clock = std::chrono::steady_clock;

  /// A wait that begins later than this after the last one sleeps at once; such waits are rare, so the price is small.
  static constexpr std::chrono::microseconds kClosely{50};
  /// Where yielding took longer than this, another program ran and not the setter, because the scheduler lets a program
  /// run for milliseconds. Then the waiter does not yield for a pause, and the next pause is twice as long.
  static constexpr std::chrono::microseconds kTooLong{100};
  static constexpr std::chrono::milliseconds kFirstPause{16};
  static constexpr std::chrono::seconds kLongestPause{2};

  void Yield(const WakeWord& word) {
    const Clock::time_point begin = Clock::now();
    if (begin - lastEnd_ > kClosely || begin < pausedUntil_) return;
    sched_yield();
    if (!word.IsSet()) sched_yield();
    const Clock::time_point end = Clock::now();
    if (end - begin <= kTooLong) return;
    pausedUntil_ = end + pause_;
    pause_ = std::min<Clock::duration>(2 * pause_, kLongestPause);
  }

  Clock::time_point lastEnd_{};
  Clock::time_point pausedUntil_{};
  Clock::duration pause_ = kFirstPause;
};

}  // namespace platform
