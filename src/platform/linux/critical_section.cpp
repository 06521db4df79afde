#include "platform/critical_section.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <thread>

#include "platform/processor.h"

namespace platform {
namespace {

/// One word and its owner. A free lock is entered and left without a system call, because most locks are wanted by one
/// thread at a time.
class Lock {
 public:
  explicit Lock(std::uint32_t spinCount) : spinCount_(spinCount) {}

  void Enter() {
    const pthread_t self = pthread_self();
    if (!TryTake()) {
      // No other thread stores this thread's handle, so it stands here only while this thread holds the lock.
      if (owner_.load(std::memory_order_relaxed) == self) {
        ++reentries_;
        return;
      }
      WaitAndTake();
    }
    owner_.store(self, std::memory_order_relaxed);
  }

  void Leave() {
    if (reentries_ > 0) {
      --reentries_;
      return;
    }
    owner_.store(kNobody, std::memory_order_relaxed);
    if (state_.exchange(kFree, std::memory_order_release) != kAwaited) return;
    syscall(SYS_futex, &state_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  }

 private:
  static constexpr std::uint32_t kFree = 0, kTaken = 1, kAwaited = 2;  // kAwaited: taken, and a thread may be asleep
  static constexpr pthread_t kNobody = 0;

  /// Each look takes the word's cache line from the holder, who then waits for it in order to leave.
  static constexpr std::uint32_t kSpinsPerLook = 8;

  bool TryTake() {
    std::uint32_t seen = kFree;
    return state_.compare_exchange_strong(seen, kTaken, std::memory_order_acquire, std::memory_order_relaxed);
  }

  void WaitAndTake() {
    for (std::uint32_t i = 1; i <= spinCount_; ++i) {
      PauseInSpin();
      if (i % kSpinsPerLook == 0 && state_.load(std::memory_order_relaxed) == kFree && TryTake()) return;
    }
    // Taken as awaited, because other threads may be asleep.
    while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree)
      syscall(SYS_futex, &state_, FUTEX_WAIT_PRIVATE, kAwaited, nullptr, nullptr, 0);
  }

  std::atomic<std::uint32_t> state_{kFree};
  const std::uint32_t spinCount_;
  std::atomic<pthread_t> owner_{kNobody};
  std::uint32_t reentries_ = 0;  ///< of the owner, beyond the first entry
};

Lock& In(std::byte* storage) {
  return *std::launder(reinterpret_cast<Lock*>(storage));
}

}  // namespace

CriticalSection::CriticalSection(std::uint32_t spinCount) {
  static_assert(sizeof(Lock) <= sizeof storage_ && alignof(Lock) <= 8);
  // With one processor no spinning, because the holder cannot run meanwhile.
  static const bool oneProcessor = std::thread::hardware_concurrency() == 1;
  new (storage_) Lock(oneProcessor ? 0 : spinCount);
}

CriticalSection::~CriticalSection() {
  In(storage_).~Lock();
}

void CriticalSection::lock() {
  In(storage_).Enter();
}

void CriticalSection::unlock() {
  In(storage_).Leave();
}

}  // namespace platform
