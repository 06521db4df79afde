#include "platform/threads.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <new>

#include "platform/processor.h"

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

/// Two system calls and a wake-up take about as long, so that watching for longer cannot pay.
constexpr std::chrono::microseconds kLongestWatch{20};

/// A signal from one thread to one other: a word that the setter sets and the waiter clears. Calls the system only
/// where the waiter sleeps.
class Signal {
 public:
  /// True where the waiter was watching, which means that it is running.
  bool Set() {
    const std::uint32_t before = state_.exchange(kSet, std::memory_order_acq_rel);
    if (before == kAsleep) syscall(SYS_futex, &state_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    return before == kWatched;
  }

  /// watch: look out for the signal for a while before going to sleep.
  void Wait(bool watch) {
    if (watch) Watch();
    std::uint32_t seen = state_.load(std::memory_order_acquire);
    while (seen != kSet) {
      if (seen != kAsleep && !state_.compare_exchange_weak(seen, kAsleep, std::memory_order_acquire)) continue;
      syscall(SYS_futex, &state_, FUTEX_WAIT_PRIVATE, kAsleep, nullptr, nullptr, 0);
      seen = state_.load(std::memory_order_acquire);
    }
    state_.store(kClear, std::memory_order_relaxed);
  }

 private:
  static constexpr std::uint32_t kClear = 0, kSet = 1, kAsleep = 2, kWatched = 3;

  void Watch() {
    std::uint32_t seen = kClear;
    if (!state_.compare_exchange_strong(seen, kWatched, std::memory_order_relaxed)) return;
    const auto end = Clock::now() + kLongestWatch;
    do {
      for (int i = 0; i < 16; ++i) {
        if (state_.load(std::memory_order_relaxed) == kSet) return;
        PauseInSpin();
      }
    } while (Clock::now() < end);
  }

  std::atomic<std::uint32_t> state_{kClear};
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free && sizeof(Signal) == sizeof(std::uint32_t));

/// A thread and its task. The deliverer sets the task, signals start and waits for finished, so each field has one
/// writer at a time. A null task ends the thread. Each side writes to a cache line of its own.
struct Worker {
  alignas(64) Signal start;
  void (*task)(void*) = nullptr;
  void* context = nullptr;
  int delivererProcessor = -1;
  alignas(64) Signal finished;
  alignas(64) Worker* next = nullptr;
  pthread_t thread{};
};

/// Between tasks the worker watches for the next one before it sleeps: a task that comes meanwhile costs no system
/// call. It does so only where tasks follow closely and the deliverer was last seen on another processor, because
/// watching would take the processor that the deliverer needs.
void* WorkerMain(void* argument) {
  auto* const worker = static_cast<Worker*>(argument);
  bool watch = false;
  Clock::time_point idleSince = Clock::now();
  for (;;) {
    worker->start.Wait(watch);
    if (!worker->task) return nullptr;
    const bool closely = Clock::now() - idleSince < kLongestWatch;
    worker->task(worker->context);
    watch = closely && sched_getcpu() != worker->delivererProcessor;
    worker->finished.Set();
    idleSince = Clock::now();
  }
}

/// Idle workers beyond this number end. Deliveries come from few threads; more of them at once are a burst.
constexpr int kMostIdleWorkers = 16;

/// The idle workers, the one that was busy last on top, because its stack and its processor are warm.
class IdleWorkers {
 public:
  /// Null where none is idle.
  Worker* Take() {
    pthread_mutex_lock(&mutex_);
    Worker* const worker = top_;
    if (worker) {
      top_ = worker->next;
      --count_;
    }
    pthread_mutex_unlock(&mutex_);
    return worker;
  }

  /// False where enough are idle; the worker is then the caller's.
  bool Put(Worker* worker) {
    pthread_mutex_lock(&mutex_);
    const bool kept = count_ < kMostIdleWorkers;
    if (kept) {
      worker->next = top_;
      top_ = worker;
      ++count_;
    }
    pthread_mutex_unlock(&mutex_);
    return kept;
  }

  /// For a fork: locked before and unlocked after it, so that the child does not get a list half changed. The child
  /// forgets all workers, because it has none of their threads.
  void Lock() { pthread_mutex_lock(&mutex_); }
  void Unlock() { pthread_mutex_unlock(&mutex_); }
  void ForgetAllAndUnlock() {
    top_ = nullptr;
    count_ = 0;
    pthread_mutex_unlock(&mutex_);
  }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
  Worker* top_ = nullptr;
  int count_ = 0;
};

constinit IdleWorkers idleWorkers;

thread_local constinit std::uint32_t currentThreadId = 0;

void ForgetThreadsOfParent() {
  currentThreadId = 0;
  idleWorkers.ForgetAllAndUnlock();
}

/// Called before anything is kept that a forked child must forget.
void WatchForks() {
  static const int watched =
      pthread_atfork([] { idleWorkers.Lock(); }, [] { idleWorkers.Unlock(); }, ForgetThreadsOfParent);
  static_cast<void>(watched);
}

/// The signals that a thread causes itself, and that of profilers. They stay open, because a fault whose signal is
/// blocked ends the process without the host's handler.
constexpr int kOpenSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF};

/// A worker blocks all other signals, because those are for the host's own threads.
bool StartThread(Worker* worker) {
  sigset_t blocked, before;
  sigfillset(&blocked);
  for (const int signal : kOpenSignals) sigdelset(&blocked, signal);
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  const int error = pthread_create(&worker->thread, nullptr, WorkerMain, worker);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error == 0;
}

/// Null where there is no memory or no thread.
Worker* NewWorker() {
  WatchForks();
  auto* const worker = new (std::nothrow) Worker;
  if (worker && StartThread(worker)) return worker;
  delete worker;
  return nullptr;
}

/// Ends the thread and frees the worker. Requires a worker that is not in the list.
void End(Worker* worker) {
  worker->task = nullptr;
  worker->start.Set();
  pthread_join(worker->thread, nullptr);
  delete worker;
}

}  // namespace

std::uint32_t GetCurrentThreadId() {
  if (currentThreadId == 0) {
    WatchForks();
    currentThreadId = static_cast<std::uint32_t>(syscall(SYS_gettid));
  }
  return currentThreadId;
}

bool RunOnWorkerAndWait(void (*task)(void*), void* context) {
  Worker* worker = idleWorkers.Take();
  if (!worker) worker = NewWorker();
  if (!worker) return false;
  worker->task = task;
  worker->context = context;
  worker->delivererProcessor = sched_getcpu();
  const bool watched = worker->start.Set();
  worker->finished.Wait(watched);
  if (!idleWorkers.Put(worker)) End(worker);
  return true;
}

void StopWorkers() {
  while (Worker* const worker = idleWorkers.Take()) End(worker);
}

}  // namespace platform
