#include "platform/append_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;

/// A pipe takes a part of what it is given where a signal interrupts the call.
TEST(AppendFile, PiecesArriveWholeOrFailWithoutASignal) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "platform_tests_pipe";
  mkfifo(path.c_str(), 0600);
  std::vector<std::string> texts;
  for (char letter = 'A'; letter <= 'Z'; ++letter) texts.emplace_back(10'000 + letter, letter);
  std::string expected;
  std::vector<BytePiece> pieces;
  for (const std::string& text : texts) expected += text, pieces.push_back(std::as_bytes(std::span(text)));

  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
  std::thread writer([&] {
    AppendFile* const file = OpenForAppend(path.u16string().c_str());
    EXPECT_TRUE(Append(file, pieces));
    CloseAppendFile(file);
  });
  for (int i = 0; i < 500; ++i, usleep(50)) pthread_kill(writer.native_handle(), SIGUSR1);
  fcntl(reader, F_SETFL, 0);
  std::string arrived;
  std::array<char, 4096> block;
  for (ssize_t bytes; (bytes = read(reader, block.data(), block.size())) > 0;)
    arrived.append(block.data(), static_cast<std::size_t>(bytes));
  writer.join();
  EXPECT_TRUE(arrived == expected);

  AppendFile* const file = OpenForAppend(path.u16string().c_str());
  close(reader);
  EXPECT_FALSE(Append(file, pieces));
  CloseAppendFile(file);
  EXPECT_EQ(OpenForAppend(path.u16string().c_str()), nullptr) << "nobody reads the pipe";
  std::filesystem::remove(path);
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(OpenForAppend((path / "none").u16string().c_str()), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

/// The limit is there when the file is opened, or comes later.
TEST(AppendFileDeathTest, AtALimitOnSizesWritesFailWithoutASignal) {
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "platform_tests_limit";
  const auto write = [&path](bool isEarly) {
    rlimit unlimited;
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit limit{10, unlimited.rlim_max};
    if (isEarly) setrlimit(RLIMIT_FSIZE, &limit);
    AppendFile* const file = OpenForAppend(path.u16string().c_str());
    setrlimit(RLIMIT_FSIZE, &limit);
    const BytePiece piece = std::as_bytes(std::span("line", 4));
    int written = 0;
    for (int i = 0; i < 4; ++i) written += Append(file, {&piece, 1});
    CloseAppendFile(file);
    setrlimit(RLIMIT_FSIZE, &unlimited);  // for what the end of the process writes
    std::exit(written == 2 && std::filesystem::file_size(path) == 10 ? 0 : 1);
  };
  for (const bool isEarly : {true, false}) {
    EXPECT_EXIT(write(isEarly), testing::ExitedWithCode(0), "") << isEarly;
    std::filesystem::remove(path);
  }
}
