#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "platform/hand_over.h"

using namespace platform;

namespace {

TEST(WorkerSignals, OnlyThoseOfTheThreadsOwnDoingAreOpen) {
  sigset_t blocked;
  ASSERT_TRUE(HandOver([&] { pthread_sigmask(SIG_BLOCK, nullptr, &blocked); }));
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

/// It forks where a worker is idle, whose thread the child has not.
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
