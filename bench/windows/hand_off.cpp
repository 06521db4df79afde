/// Measures the hand-over on Windows beside the thread pool's own: SubmitThreadpoolWork and
/// WaitForThreadpoolWorkCallbacks with one work item. It is a program of its own, because the benchmark library is not
/// packaged for the cross-compiler.
///
/// It prints a line for each kind of work. The two ways take turns; the figures are the median of the rounds.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include "platform/threads.h"
#include "platform/windows/api.h"

namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kRounds = 9;

struct Task {
  std::uint64_t runs = 0;
  DWORD ranOn = 0;
  static void Run(void* context) {
    auto& task = *static_cast<Task*>(context);
    ++task.runs;
    task.ranOn = ::GetCurrentThreadId();
  }
};

class Library {
 public:
  explicit Library(Task& task) : task_(task) {}
  void HandOver() {
    if (!platform::RunOnWorkerAndWait(&Task::Run, &task_)) throw std::runtime_error("no worker");
  }

 private:
  Task& task_;
};

class ThreadPool {
 public:
  explicit ThreadPool(Task& task) : work_(CreateThreadpoolWork(&Run, &task, nullptr)) {
    if (!work_) throw std::runtime_error("no work item");
  }
  ~ThreadPool() { CloseThreadpoolWork(work_); }
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  void HandOver() {
    SubmitThreadpoolWork(work_);
    WaitForThreadpoolWorkCallbacks(work_, FALSE);
  }

 private:
  static void CALLBACK Run(PTP_CALLBACK_INSTANCE, void* context, PTP_WORK) { Task::Run(context); }
  PTP_WORK work_;
};

struct Work {
  const char* name;
  int handOvers;
  std::chrono::milliseconds rest;  ///< before each hand-over, not timed
  int deliverers;                  ///< threads that do this at the same time
};
constexpr Work kWork[] = {
    {"one after the other", 20'000, std::chrono::milliseconds(0), 1},
    {"after a rest of 1 ms", 500, std::chrono::milliseconds(1), 1},
    {"two deliverers", 10'000, std::chrono::milliseconds(0), 2},
};

/// The mean of one deliverer's hand-overs.
template <class Way>
Microseconds Deliver(const Work& work) {
  Task task;
  Way way(task);
  Microseconds total{0};
  for (int i = 0; i < work.handOvers; ++i) {
    if (work.rest.count() > 0) std::this_thread::sleep_for(work.rest);
    const auto start = Clock::now();
    way.HandOver();
    total += Clock::now() - start;
  }
  if (task.runs != static_cast<std::uint64_t>(work.handOvers) || task.ranOn == ::GetCurrentThreadId())
    throw std::runtime_error("not every task ran on another thread");
  return total / work.handOvers;
}

template <class Way>
double MeasureRound(const Work& work) {
  Microseconds other{0};
  std::thread second;
  if (work.deliverers == 2) second = std::thread([&] { other = Deliver<Way>(work); });
  const Microseconds first = Deliver<Way>(work);
  if (second.joinable()) second.join();
  return (first + other).count() / work.deliverers;
}

}  // namespace

int main() {
  std::printf("%-22s %12s %12s %6s\n", "hand-over", "library, us", "pool, us", "ratio");
  for (const Work& work : kWork) {
    std::array<double, kRounds> library{}, pool{};
    for (std::size_t round = 0; round < kRounds; ++round) {
      library[round] = MeasureRound<Library>(work);
      pool[round] = MeasureRound<ThreadPool>(work);
    }
    std::ranges::sort(library);
    std::ranges::sort(pool);
    const double ours = library[kRounds / 2], theirs = pool[kRounds / 2];
    std::printf("%-22s %12.2f %12.2f %6.2f\n", work.name, ours, theirs, ours / theirs);
  }
}
