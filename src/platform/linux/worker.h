/// A thread that runs one task after the other, each for a deliverer that waits meanwhile.
///
/// Where the worker runs decides what a hand-over costs. Beside its deliverer, on the same processor, it finds the
/// deliverer's data in the cache and needs no wake-up of another processor. Apart, on another one, the two can watch
/// for each other without a switch between threads, while hand-overs follow closely (placement.h).
///
/// A worker that sleeps on the wrong processor is steered: it gets an affinity mask before it wakes, and its own mask
/// back before the task runs, because threads that a task starts inherit the mask.
#pragma once

#include <pthread.h>
#include <sched.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>

#include "platform/linux/placement.h"
#include "platform/linux/wake_word.h"

namespace platform {

/// Used by one deliverer at a time. The deliverer writes the task, sets start and waits for finished, so each field has
/// one writer at a time. What each side writes while the other runs lies on a cache line of its own.
class Worker {
 public:
  /// Null where there is no memory or no thread.
  static Worker* Start();

  /// Runs task(context) on the worker's thread and returns when it has returned.
  void Run(void (*task)(void*), void* context);

  /// Ends the thread and frees the worker.
  void End();

 private:
  using Time = std::chrono::steady_clock::time_point;

  static void* Main(void* worker);
  void RunTasks();
  bool Steer(Time now);
  bool SetMask();

  // The deliverer's, read by the worker.
  alignas(64) WakeWord start_;
  int processor_ = 0;  // the deliverer's
  bool isApart_ = false;
  bool steered_ = false;
  void (*task_)(void*) = nullptr;  // null ends the thread
  void* context_ = nullptr;
  cpu_set_t ownMask_{};  // to be set again where steered

  // The deliverer's own.
  alignas(64) Placement placement_;
  Waiter deliverer_;
  Time strayed_{};  // when the worker was last found on another processor

  // The worker's, read by the deliverer.
  alignas(64) WakeWord finished_;
  pid_t threadId_ = 0;
  int lastProcessor_ = -1;
  std::atomic<bool> wasBrief_{true};  // written last, so that the deliverer may see it a task late

  // The worker's own.
  alignas(64) Waiter worker_;

  pthread_t thread_{};
};

}  // namespace platform
