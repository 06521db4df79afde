#include "platform/linux/ansi_code_page.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/registry.h"

using namespace platform;

namespace {

/// Unit by code, the lead byte in the high half.
using Codes = std::map<unsigned, char16_t>;

std::map<unsigned, Codes> CodesOfPython() {
  std::map<unsigned, Codes> pages;
  std::FILE* const lines = popen(TARN_PYTHON " " TARN_TEST_FOLDER "/code_pages.py", "r");
  for (unsigned page, code, unit; std::fscanf(lines, "%u %x %x", &page, &code, &unit) == 3;)
    pages[page][code] = static_cast<char16_t>(unit);
  pclose(lines);
  return pages;
}

std::string BytesOf(unsigned code) {
  const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
  return code > 0xFF ? std::string(bytes, 2) : std::string(bytes + 1, 1);
}

std::u16string Widened(const AnsiCodePage& page, unsigned code) {
  char16_t units[2] = {};
  return std::u16string(units, page.Widen(BytesOf(code), units));
}

std::string Narrowed(const AnsiCodePage& page, char16_t unit) {
  char bytes[2] = {};
  return std::string(bytes, page.Narrow({&unit, 1}, bytes));
}

TEST(AnsiCodePages, AllCodesAreThoseOfPythonsCodecs) {
  const std::map<unsigned, Codes> pages = CodesOfPython();
  ASSERT_EQ(pages.size(), 14U);
  for (auto [number, codes] : pages) {
    SCOPED_TRACE(number);
    const auto page = std::make_unique<AnsiCodePage>();
    page->Load(number);
    // A byte that is not defined stands for itself; lead bytes that begin no character are left out.
    for (unsigned code = 0x80; code < 0x100; ++code)
      if (Widened(*page, code) != u"?") codes.try_emplace(code, static_cast<char16_t>(code));
    std::map<char16_t, std::set<std::string>> narrow;
    for (const auto& [code, unit] : codes) {
      ASSERT_EQ(Widened(*page, code), std::u16string(1, unit)) << std::hex << code;
      narrow[unit].insert(BytesOf(code));
    }
    for (char16_t unit = 0; unit < 0xFFFF; unit = unit == 0xDFFF ? 0xF900 : static_cast<char16_t>(unit + 1)) {
      const std::string bytes = Narrowed(*page, unit);
      ASSERT_TRUE(narrow.contains(unit) ? narrow[unit].contains(bytes) : bytes == "?") << std::hex << int{unit};
    }
  }
}

/// Characters with several codes in the Japanese page: Windows writes NEC's row 13 and IBM's extensions, and neither
/// NEC's selection of those nor a second code of a JIS character.
TEST(AnsiCodePages, OfSeveralCodesTheOneOfWindowsIsWritten) {
  const auto page = std::make_unique<AnsiCodePage>();
  page->Load(932);
  const std::pair<char16_t, unsigned> rows[] = {
      {u'\u2160', 0x8754}, {u'\u2170', 0xFA40}, {u'\u7E8A', 0xFA5C}, {u'\u2252', 0x81E0}, {u'\uFFE2', 0x81CA}};
  for (const auto& [unit, code] : rows) EXPECT_EQ(Narrowed(*page, unit), BytesOf(code)) << std::hex << code;
  EXPECT_EQ(Widened(*page, 0x8100), std::u16string(u"?\0", 2)) << "a lead byte does not swallow the terminator";
}

/// The page is read from the setting once in a process.
TEST(AnsiCodePagesDeathTest, SettingChoosesThePage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("TARN_TEST_A", "\xE6\x9D\xB1\xC3\xA9\xC4\x81", 1);  // East, e acute, a macron
  const std::pair<const char*, const char*> rows[] = {{"932", "\x93\x8C??"},
                                                      {"936", "\x96\x7C\xA8\xA6\xA8\xA1"},
                                                      {"949", "\xD4\xD4??"},
                                                      {"950", "\xAA\x46??"},
                                                      {"1251", "???"},
                                                      {"1257", "?\xE9\xE2"},
                                                      {"65001", "\xE6\x9D\xB1\xC3\xA9\xC4\x81"},
                                                      {"", "?\xE9?"},
                                                      {"1252x", "?\xE9?"},
                                                      {"37", "?\xE9?"}};
  for (const auto& [setting, expected] : rows) {
    setenv("TARN_ANSI_CODE_PAGE", setting, 1);
    const auto expand = [&expected = expected] {
      char target[8] = {};
      const std::uint32_t needed = ExpandEnvironmentStringsA("%TARN_TEST_A%", target, sizeof target);
      std::exit(std::string(target) == expected && needed == std::string(expected).size() + 1 ? 0 : 1);
    };
    EXPECT_EXIT(expand(), testing::ExitedWithCode(0), "") << setting;
  }
  unsetenv("TARN_ANSI_CODE_PAGE");
}

}  // namespace
