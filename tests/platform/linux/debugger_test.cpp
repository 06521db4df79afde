#include "platform/debugger.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

TEST(Debugger, LinesGoToTheFileAsTheyAre) {
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "platform_tests_debugger.txt";
  std::filesystem::remove(path);
  setenv("TARN_DEBUGGER", path.c_str(), 1);

  platform::OutputDebugStringW(u"gr\u00FC\u00DF-\r\n");
  platform::OutputDebugStringA("\xE4|");
  platform::OutputDebugStringW(nullptr);
  const std::u16string longLine(5000, u'\u6771');
  platform::OutputDebugStringW(longLine.c_str());
  unsetenv("TARN_DEBUGGER");

  std::string expected = "gr\xC3\xBC\xC3\x9F-\r\n\xC3\xA4|";
  for (int i = 0; i < 5000; ++i) expected += "\xE6\x9D\xB1";
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), expected);
  std::filesystem::remove(path);
}

/// A pipe without a reader and a file at its limit each raise a signal that ends the process; a pipe that nobody has
/// opened for reading is waited for. A host that blocks the signal keeps the one of its own that is pending, and gets
/// none.
TEST(DebuggerDeathTest, NoSinkEndsOrStopsTheHostOrChangesItsSignals) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string path = (std::filesystem::path(testing::TempDir()) / "platform_tests_sink").string();
  enum Host { kOrdinary, kBlocking, kPending };
  const auto write = [](const char* target, Host host = kOrdinary) {
    sigset_t before;
    sigemptyset(&before);
    if (host != kOrdinary) sigaddset(&before, SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (host == kPending) raise(SIGPIPE);
    int ends[2];
    if (pipe(ends) != 0) std::exit(1);
    close(ends[0]);
    dup2(ends[1], STDERR_FILENO);
    rlimit unlimited;
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit limit{3, unlimited.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    setenv("TARN_DEBUGGER", target, 1);
    platform::OutputDebugStringA("lines");
    platform::OutputDebugStringA("lines");
    setrlimit(RLIMIT_FSIZE, &unlimited);  // for what the end of the process writes
    sigset_t pending, blocked;
    sigpending(&pending);
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
      if (sigismember(&blocked, signal) != sigismember(&before, signal)) std::exit(2);
      if (sigismember(&pending, signal) != (host == kPending && signal == SIGPIPE)) std::exit(3);
    }
    std::exit(0);
  };
  for (const Host host : {kOrdinary, kBlocking, kPending})
    EXPECT_EXIT(write("stderr", host), testing::ExitedWithCode(0), "") << host;
  EXPECT_EXIT(write(path.c_str()), testing::ExitedWithCode(0), "");
  std::filesystem::remove(path);
  mkfifo(path.c_str(), 0600);
  EXPECT_EXIT(write(path.c_str()), testing::ExitedWithCode(0), "");
  std::filesystem::remove(path);
}

}  // namespace
