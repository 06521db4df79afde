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
  SteerTo(sched_getcpu());
  start_.Set();
  deliverer_.Wait(finished_);
}

void Worker::End() {
  task_ = nullptr;
  start_.Set();
  pthread_join(thread_, nullptr);
  delete this;
}

/// A worker that is awake is never moved, because the system would have to stop it first. Where the mask cannot be read
/// or set, or forbids the processor, the worker stays where it is.
void Worker::SteerTo(int processor) {
  if (!start_.IsAsleep() || !wasBrief_) return;
  const Clock::time_point now = Clock::now();
  if (lastProcessor_ != processor) strayed_ = now;
  if (now - strayed_ > kStraying) return;
  if (sched_getaffinity(threadId_, sizeof ownMask_, &ownMask_) != 0 || !CPU_ISSET(processor, &ownMask_)) return;
  cpu_set_t mask;
  CPU_ZERO(&mask);
  CPU_SET(processor, &mask);
  steered_ = sched_setaffinity(threadId_, sizeof mask, &mask) == 0;
}

void* Worker::Main(void* worker) {
  static_cast<Worker*>(worker)->RunTasks();
  return nullptr;
}

void Worker::RunTasks() {
  threadId_ = static_cast<pid_t>(syscall(SYS_gettid));
  for (;;) {
    worker_.Wait(start_);
    if (!task_) return;
    if (steered_) {
      sched_setaffinity(0, sizeof ownMask_, &ownMask_);
      steered_ = false;
    }
    const Clock::time_point begin = Clock::now();
    task_(context_);
    wasBrief_ = Clock::now() - begin < kBrief;
    lastProcessor_ = sched_getcpu();
    finished_.Set();
  }
}

}  // namespace platform
