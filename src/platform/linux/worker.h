/// A thread that runs one task after the other, each for a deliverer that waits meanwhile.
///
/// Where the worker runs decides what a hand-over costs: on the deliverer's processor it finds the deliverer's data in
/// the cache and needs no wake-up of another processor, and the deliverer has nothing to do but to wait. So a worker
/// that sleeps elsewhere is steered: it gets the deliverer's processor as its affinity mask before it wakes, and its
/// own mask back before the task runs, because threads that a task starts inherit the mask.
#pragma once

#include <pthread.h>
#include <sched.h>
#include <sys/types.h>

#include <chrono>

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
  using Clock = std::chrono::steady_clock;

  static void* Main(void* worker);
  void RunTasks();
  void SteerTo(int processor);

  // The deliverer's.
  alignas(64) WakeWord start_;
  void (*task_)(void*) = nullptr;  // null ends the thread
  void* context_ = nullptr;
  bool steered_ = false;
  cpu_set_t ownMask_{};          // to be set again where steered
  Clock::time_point strayed_{};  // when the worker was last found on another processor
  YieldingWaiter deliverer_;

  // The worker's.
  alignas(64) WakeWord finished_;
  pid_t threadId_ = 0;
  int lastProcessor_ = -1;
  bool wasBrief_ = true;
  YieldingWaiter worker_;

  pthread_t thread_{};
};

}  // namespace platform
