#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/clock.h"

using namespace platform;

/// A locale is read once in a process, and made in a folder of our own, because few machines have any.
TEST(LocaleFormsDeathTest, TextsAreConvertedFromTheLocalesCodeSet) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "platform_tests_locales";
  std::filesystem::create_directory(folder);
  setenv("LOCPATH", folder.c_str(), 1);
  const struct {
    std::string locale, codeSet;
    std::u16string date, day, time;
  } rows[] = {{"de_DE", "ISO-8859-1", u"Samstag, 2 M\u00E4rz 2024", u"Sa", u"13:05"},
              {"ja_JP", "EUC-JP", u"\u571F\u66DC\u65E5, 2 3\u6708 2024", u"\u571F", u"13:05"},
              {"en_US", "UTF-8", u"Saturday, 2 March 2024", u"Sat", u"01:05 PM"},   // times are "%r"
              {"en_PH", "UTF-8", u"Saturday, 2 March 2024", u"Sat", u"01:05 PM"}};  // times have "%p"
  for (const auto& row : rows) {
    const std::string target = (folder / row.locale).string() + "." + row.codeSet;
    const std::string make = "localedef -c -i " + row.locale + " -f " + row.codeSet + " " + target + " 2>/dev/null";
    if (!std::filesystem::exists(target)) static_cast<void>(std::system(make.c_str()));
    if (!std::filesystem::exists(target)) GTEST_SKIP() << "localedef, or the sources of locales, are missing";
    setenv("LC_ALL", (row.locale + "." + row.codeSet).c_str(), 1);
    const auto format = [&row] {
      const SystemTime time{2024, 3, 6, 2, 13, 5, 9, 0};
      char16_t date[64] = {}, day[64] = {}, hour[64] = {};
      GetDateFormatW(DATE_LONGDATE, time, nullptr, date, 64);
      GetDateFormatW(0, time, u"ddd", day, 64);
      GetTimeFormatW(TIME_NOSECONDS, time, hour, 64);
      // No exit handlers, because the C library leaks the folder's name, which a leak checker reports.
      std::_Exit(date != row.date ? 1 : day != row.day ? 2 : hour != row.time ? 3 : 0);
    };
    EXPECT_EXIT(format(), testing::ExitedWithCode(0), "") << row.locale;
  }
  setenv("LC_ALL", "C", 1);
  unsetenv("LOCPATH");
  std::filesystem::remove_all(folder);
}
