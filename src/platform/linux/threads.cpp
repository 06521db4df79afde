#include "platform/threads.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "platform/linux/worker.h"

namespace platform {
namespace {

/// The idle workers. A deliverer looks first where it put its last one, because that one's stack and heap are warm, and
/// it sleeps where the deliverer runs.
class IdleWorkers {
 public:
  /// Null where none is idle.
  Worker* Take() {
    const unsigned first = ThreadPlace();
    for (unsigned i = 0; i < kPlaces; ++i) {
      std::atomic<Worker*>& place = places_[(first + i) % kPlaces];
      if (!place.load(std::memory_order_relaxed)) continue;
      if (Worker* const worker = place.exchange(nullptr, std::memory_order_acquire)) return worker;
    }
    return nullptr;
  }

  /// False where all places are taken; the worker is then the caller's.
  bool Put(Worker* worker) {
    const unsigned first = ThreadPlace();
    for (unsigned i = 0; i < kPlaces; ++i) {
      std::atomic<Worker*>& place = places_[(first + i) % kPlaces];
      Worker* none = place.load(std::memory_order_relaxed);
      if (!none && place.compare_exchange_strong(none, worker, std::memory_order_release, std::memory_order_relaxed))
        return true;
    }
    return false;
  }

  /// For the child of a fork, which has none of their threads.
  void Forget() {
    for (std::atomic<Worker*>& place : places_) place.store(nullptr, std::memory_order_relaxed);
  }

 private:
  /// Workers beyond this number end. Deliveries come from few threads; more of them at once are a burst.
  static constexpr unsigned kPlaces = 16;

  std::atomic<Worker*> places_[kPlaces]{};
};

constinit IdleWorkers idleWorkers;

thread_local constinit std::uint32_t currentThreadId = 0;

/// Called before anything is kept that a forked child must forget.
void WatchForks() {
  static const int watched = pthread_atfork(nullptr, nullptr, [] {
    currentThreadId = 0;
    idleWorkers.Forget();
  });
  static_cast<void>(watched);
}

}  // namespace

/// The page of the thread's descriptor, because the system's stacks lie a page more than a multiple of 16 pages apart.
std::uint32_t ThreadPlace() {
  return static_cast<std::uint32_t>(pthread_self() >> 12);
}

std::uint32_t GetCurrentThreadId() {
  if (currentThreadId == 0) {
    WatchForks();
    currentThreadId = static_cast<std::uint32_t>(syscall(SYS_gettid));
  }
  return currentThreadId;
}

bool RunOnWorkerAndWait(void (*task)(void*), void* context) {
  Worker* worker = idleWorkers.Take();
  if (!worker) {
    WatchForks();
    worker = Worker::Start();
  }
  if (!worker) return false;
  worker->Run(task, context);
  if (!idleWorkers.Put(worker)) worker->End();
  return true;
}

void StopWorkers() {
  while (Worker* const worker = idleWorkers.Take()) worker->End();
}

}  // namespace platform
