#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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
    std::u16string texts;  // the date, long and short, the day, and the time with and without seconds
  } rows[] = {{"de_DE", "ISO-8859-1", u"Samstag, 2 M\u00E4rz 2024|02.03.2024|Sa|13:05:09|13:05"},
              {"ja_JP", "EUC-JP",
               u"\u571F\u66DC\u65E5, 2 3\u6708 2024|2024\u5E7403\u670802\u65E5|\u571F|13\u664205\u520609\u79D2|13:05"},
              {"en_US", "UTF-8", u"Saturday, 2 March 2024|03/02/2024|Sat|01:05:09 PM|01:05 PM"},  // times are "%r"
              // Times have "%p" and the zone, or the zone and no seconds.
              {"en_PH", "UTF-8", u"Saturday, 2 March 2024|Saturday, 02 March, 2024|Sat|01:05:09 PM|01:05 PM"},
              // "%p" and no words for it
              {"ms_MY", "UTF-8", u"Sabtu, 2 Mac 2024|Sabtu 02 Mac 2024|Sab|13:05:09|13:05"},
              {"nb_NO", "UTF-8", u"l\u00F8rdag, 2 mars 2024|02. mars 2024|l\u00F8.|13:05:09|13:05"}};
  for (const auto& row : rows) {
    const std::string target = (folder / row.locale).string() + "." + row.codeSet;
    // Without the order of its letters, which takes seconds to make.
    std::ofstream source(folder / "source");
    for (const std::string category : {"CTYPE", "TIME", "COLLATE", "MESSAGES", "MONETARY", "NUMERIC"})
      source << "LC_" << category << "\ncopy \"" << (category == "CTYPE" || category == "TIME" ? row.locale : "POSIX")
             << "\"\nEND LC_" << category << "\n";
    source.close();
    const std::string make =
        "localedef -c -i " + (folder / "source").string() + " -f " + row.codeSet + " " + target + " >/dev/null 2>&1";
    if (!std::filesystem::exists(target)) [[maybe_unused]]
      const int made = std::system(make.c_str());
    if (!std::filesystem::exists(target)) GTEST_SKIP() << "localedef, or the sources of locales, are missing";
    setenv("LC_ALL", (row.locale + "." + row.codeSet).c_str(), 1);
    const auto format = [&row] {
      const SystemTime time{2024, 3, 6, 2, 13, 5, 9, 0};
      std::u16string texts;
      char16_t text[64];
      for (const auto& [flags, picture] :
           {std::pair(DATE_LONGDATE, static_cast<const char16_t*>(nullptr)), {DATE_SHORTDATE, nullptr}, {0, u"ddd"}})
        if (GetDateFormatW(flags, time, picture, text, 64) > 0) texts += std::u16string(text) + u"|";
      for (const std::uint32_t flags : {0U, TIME_NOSECONDS})
        if (GetTimeFormatW(flags, time, text, 64) > 0) texts += std::u16string(text) + (flags == 0 ? u"|" : u"");
      // No exit handlers, because the C library leaks the folder's name, which a leak checker reports.
      std::_Exit(texts != row.texts);
    };
    EXPECT_EXIT(format(), testing::ExitedWithCode(0), "") << row.locale;
  }
  setenv("LC_ALL", "C", 1);
  unsetenv("LOCPATH");
  std::filesystem::remove_all(folder);
}
