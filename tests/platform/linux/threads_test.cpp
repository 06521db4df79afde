#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <latch>
#include <thread>
#include <vector>

#include "platform/critical_section.h"
#include "platform/hand_over.h"

using namespace platform;

namespace {

TEST(WorkerSignals, OnlyThoseOfTheThreadsOwnDoingAreOpen) {
  StopWorkers();
  sigset_t blocked, ours;
  ASSERT_TRUE(HandOver([&] { pthread_sigmask(SIG_BLOCK, nullptr, &blocked); }));
  pthread_sigmask(SIG_BLOCK, nullptr, &ours);
  EXPECT_FALSE(sigismember(&ours, SIGTERM)) << "the deliverer's own signals are as before";
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF})
    EXPECT_FALSE(sigismember(&blocked, signal)) << strsignal(signal);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGALRM, SIGPIPE, SIGUSR1})
    EXPECT_TRUE(sigismember(&blocked, signal)) << strsignal(signal);
  StopWorkers();
}

TEST(WorkerSignalsDeathTest, TheHostsHandlerRunsForAFaultInATask) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto fault = [] {
    std::signal(SIGSEGV, [](int) { _exit(7); });
    void* const page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    static_cast<void>(HandOver([page] { *static_cast<volatile char*>(page) = 1; }));
  };
  EXPECT_EXIT(fault(), testing::ExitedWithCode(7), "");
}

std::ptrdiff_t Threads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// A joined thread is listed until the system has put it away.
void ExpectThreads(std::ptrdiff_t count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (Threads() != count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  EXPECT_EQ(Threads(), count);
}

TEST(WorkerThreads, IdleOnesBeyondABoundEnd) {
  ASSERT_TRUE(HandOver([] {}));  // a sanitizer starts a thread of its own with the first one
  StopWorkers();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // until the ended ones are no longer listed
  const std::ptrdiff_t before = Threads();
  std::latch allBusy(200);
  std::vector<std::thread> deliverers;
  for (int i = 0; i < 200; ++i)
    deliverers.emplace_back([&] { EXPECT_TRUE(HandOver([&] { allBusy.arrive_and_wait(); })); });
  for (std::thread& deliverer : deliverers) deliverer.join();
  ExpectThreads(before + 16);
  StopWorkers();
  ExpectThreads(before);
}

/// For a lock and for a task, and as an idle worker.
TEST(WorkerThreads, WaitingTakesNoProcessorTime) {
  const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(300)); };
  CriticalSection section(1000);
  ASSERT_TRUE(HandOver([] {}));
  const std::clock_t before = std::clock();
  section.lock();
  std::thread waiting([&] { section.lock(), section.unlock(); });
  ASSERT_TRUE(HandOver(pause));
  section.unlock();
  waiting.join();
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 25);
}

/// Threads that a task starts inherit its mask. The worker moves: the deliverer goes from one processor to the next while
/// it sleeps, and then hands over closely enough for it to be sent to another one.
TEST(WorkerThreads, TasksMayRunOnEveryProcessorThatTheirWorkerHad) {
  cpu_set_t all;
  ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
  if (CPU_COUNT(&all) < 2) GTEST_SKIP() << "there is one processor";
  StopWorkers();
  int narrowed = 0;
  const auto look = [&] {
    cpu_set_t mask;
    sched_getaffinity(0, sizeof mask, &mask);
    narrowed += !CPU_EQUAL(&mask, &all);
  };
  ASSERT_TRUE(HandOver(look));
  for (int i = 0, processor = 0; i < 20; ++i) {
    do processor = (processor + 1) % CPU_SETSIZE;
    while (!CPU_ISSET(processor, &all));
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    sched_setaffinity(0, sizeof one, &one);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_TRUE(HandOver(look));
  }
  sched_setaffinity(0, sizeof all, &all);
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(HandOver(look));
  EXPECT_EQ(narrowed, 0);
  StopWorkers();
}

/// The fork comes while a worker is idle; the child does not have that worker's thread.
TEST(WorkerThreads, ForkedChildHasItsOwnNumberAndWorkers) {
  ASSERT_TRUE(HandOver([] {}));
  ASSERT_EQ(GetCurrentThreadId(), static_cast<std::uint32_t>(getpid()));
  const pid_t child = fork();
  if (child == 0) _exit(GetCurrentThreadId() != static_cast<std::uint32_t>(getpid()) ? 1 : HandOver([] {}) ? 0 : 2);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  StopWorkers();
}

}  // namespace
