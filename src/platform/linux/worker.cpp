#include "platform/linux/worker.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <new>

namespace platform {
namespace {

/// A worker whose last task took longer is not steered: the deliverer's processor may have other work by then, and a
/// hand-over is a small part of the whole.
constexpr std::chrono::microseconds kBrief{200};

/// A worker that was found on another processor is steered for this long, even where it fell asleep on the deliverer's:
/// the system may wake it elsewhere, and where it did so once, it mostly does so again soon. Steering every time would
/// make a hand-over after a rest take one and a half times as long.
constexpr std::chrono::milliseconds kStraying{10};

/// The signals that a thread causes itself, and that of profilers. They stay open, because a fault whose signal is
/// blocked ends the process without the host's handler.
constexpr int kOpenSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF};

/// All other signals are blocked in a worker, because those are for the host's own threads.
sigset_t BlockedSignals() {
  sigset_t blocked;
  sigfillset(&blocked);
  for (const int signal : kOpenSignals) sigdelset(&blocked, signal);
  return blocked;
}

}  // namespace

Worker* Worker::Start() {
  auto* const worker = new (std::nothrow) Worker;
  if (!worker) return nullptr;
  const sigset_t blocked = BlockedSignals();
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  const int error = pthread_create(&worker->thread_, nullptr, Main, worker);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (error == 0) return worker;
  delete worker;
  return nullptr;
}

void Worker::Run(void (*task)(void*), void* context) {
  task_ = task;
  context_ = context;
  const Time begin = std::chrono::steady_clock::now();
  processor_ = sched_getcpu();
  isApart_ = placement_.NextIsApart(begin) && wasBrief_;
  const bool willRunApart = Steer(begin);
  start_.Set();
  const BeforeSleep action = !wasBrief_                 ? BeforeSleep::kNothing
                             : isApart_ && willRunApart ? BeforeSleep::kWatch
                                                        : BeforeSleep::kYield;
  placement_.Count(deliverer_.Wait(finished_, action, begin, TaskCountOf(processor_)));
}

void Worker::End() {
  task_ = nullptr;
  start_.Set();
  pthread_join(thread_, nullptr);
  delete this;
}

/// Sends the worker where it is wanted, and takes apart back where that is not possible. Returns whether it will run on
/// another processor than the deliverer's, as far as is known. A worker that is awake is never moved, because the
/// system would have to stop it first.
bool Worker::Steer(Time now) {
  const bool ranApart = lastProcessor_ != processor_;
  if (!start_.IsAsleep() || !wasBrief_) return ranApart;
  if (ranApart) strayed_ = now;
  if (isApart_ ? ranApart : now - strayed_ > kStraying) return ranApart;
  steered_ = SetMask();
  if (steered_) return isApart_;
  if (isApart_) placement_.Refuse(now);
  isApart_ = false;
  return ranApart;
}

/// False where the worker's mask cannot be read or set, forbids the deliverer's processor, or allows no other one.
bool Worker::SetMask() {
  if (sched_getaffinity(threadId_, sizeof ownMask_, &ownMask_) != 0 || !CPU_ISSET(processor_, &ownMask_)) return false;
  cpu_set_t mask;
  CPU_ZERO(&mask);
  CPU_SET(processor_, &mask);
  if (isApart_) CPU_XOR(&mask, &mask, &ownMask_);
  return sched_setaffinity(threadId_, sizeof mask, &mask) == 0;
}

void* Worker::Main(void* worker) {
  static_cast<Worker*>(worker)->RunTasks();
  return nullptr;
}

void Worker::RunTasks() {
  threadId_ = static_cast<pid_t>(syscall(SYS_gettid));
  BeforeSleep action = BeforeSleep::kNothing;
  Time end{};
  for (;;) {
    const Time begin = worker_.Wait(start_, action, end, TaskCountOf(lastProcessor_));
    if (!task_) return;
    if (steered_) {
      sched_setaffinity(0, sizeof ownMask_, &ownMask_);
      steered_ = false;
    }
    task_(context_);
    // All that the deliverer changes for the next task is read before it goes on.
    const int processor = sched_getcpu();
    const bool isApart = isApart_, ranApart = processor != processor_;
    lastProcessor_ = processor;
    // Beside, the deliverer may take the processor as soon as it can go on. Apart, it need not wait for the clock.
    if (!ranApart) end = std::chrono::steady_clock::now();
    finished_.Set();
    if (ranApart) end = std::chrono::steady_clock::now();
    TaskCountOf(processor).fetch_add(1, std::memory_order_relaxed);
    const bool isBrief = end - begin < kBrief;
    if (wasBrief_.load(std::memory_order_relaxed) != isBrief) wasBrief_.store(isBrief, std::memory_order_relaxed);
    // A worker that is not where it is wanted sleeps at once, because only a sleeping one is moved.
    const bool sleepsAtOnce = !isBrief || ranApart != isApart;
    action = sleepsAtOnce ? BeforeSleep::kNothing : isApart ? BeforeSleep::kWatch : BeforeSleep::kYield;
  }
}

}  // namespace platform
