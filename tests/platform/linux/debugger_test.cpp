#include "platform/debugger.h"

#include <gtest/gtest.h>

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

}  // namespace
