#include "platform/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;

namespace {

/// Standard output is a pseudo-terminal while it lives.
class Terminal : public testing::Test {
 protected:
  Terminal() {
    grantpt(master_);
    unlockpt(master_);
    const int slave = open(ptsname(master_), O_RDWR | O_NOCTTY);
    dup2(slave, STDOUT_FILENO);
    close(slave);
  }
  ~Terminal() override {
    for (const int descriptor : {dup2(before_, STDOUT_FILENO) < 0 ? -1 : before_, master_}) close(descriptor);
  }
  std::string Read() {
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(read(master_, text.data(), text.size()), 0)));
    return text;
  }
  /// A terminal may hand over in pieces what was written.
  void ExpectShown(const std::string& expected) {
    std::string text;
    while (text.size() < expected.size()) {
      const std::string more = Read();
      if (more.empty()) break;
      text += more;
    }
    EXPECT_EQ(text, expected);
  }

 private:
  const int before_ = dup(STDOUT_FILENO);
  const int master_ = posix_openpt(O_RDWR | O_NOCTTY);
};

TEST_F(Terminal, ShowsTextsAndColoursUntilItIsNone) {
  const ConsoleHandle console = GetStdHandle(STD_OUTPUT_HANDLE);
  EXPECT_TRUE(HasConsoleWindow());
  ASSERT_TRUE(WriteConsoleW(console, u"gr\u00FCn and cut", 4));
  ExpectShown("gr\xC3\xBCn");
  std::uint16_t attributes = 0;
  for (const auto& [set, shown] : {std::pair(12, "\x1b[91m"), {2, "\x1b[32m"}, {1, "\x1b[34m"}, {7, "\x1b[0m"}}) {
    ASSERT_TRUE(SetConsoleTextAttribute(console, static_cast<std::uint16_t>(set)));
    ExpectShown(shown);
    EXPECT_TRUE(GetConsoleTextAttribute(console, &attributes) && attributes == set);
  }
  std::cout << "kept back";
  FlushStandardOutput();
  ASSERT_TRUE(WriteConsoleW(console, u".", 1));
  ExpectShown("kept back.");
  const int null = open("/dev/null", O_WRONLY);
  dup2(null, STDOUT_FILENO);
  close(null);
  EXPECT_FALSE(HasConsoleWindow() || WriteConsoleW(console, u"x", 1) || SetConsoleTextAttribute(console, 1) ||
               GetConsoleTextAttribute(console, &attributes) || WriteConsoleW(nullptr, u"x", 1));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  close(STDOUT_FILENO);
  EXPECT_EQ(GetStdHandle(STD_OUTPUT_HANDLE), nullptr);
  EXPECT_EQ(GetStdHandle(0), InvalidConsoleHandle());
}

/// The signals arrive while the terminal is full, so that they interrupt calls that have written nothing yet.
TEST_F(Terminal, SignalsDoNotCutALine) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  const std::u16string line(100'000, u'x');
  std::thread writer([&] {
    EXPECT_TRUE(WriteConsoleW(GetStdHandle(STD_OUTPUT_HANDLE), line.data(), static_cast<std::uint32_t>(line.size())));
    close(STDOUT_FILENO);
  });
  for (int i = 0; i < 500; ++i, usleep(50)) pthread_kill(writer.native_handle(), SIGUSR1);
  std::size_t bytes = 0;
  while (const std::size_t more = Read().size()) bytes += more;
  writer.join();
  EXPECT_EQ(bytes, line.size());
}

}  // namespace
