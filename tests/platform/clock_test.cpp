#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;

namespace {

constexpr std::int64_t kDay = 864'000'000'000;

using Fields = std::vector<int>;
Fields FieldsOf(const SystemTime& time) {
  return {time.year, time.month, time.dayOfWeek, time.day, time.hour, time.minute, time.second, time.milliseconds};
}

/// There and back.
void ExpectSame(const SystemTime& time, std::int64_t intervals) {
  FileTime fileTime{};
  ASSERT_TRUE(SystemTimeToFileTime(time, &fileTime));
  ASSERT_EQ(static_cast<std::int64_t>(fileTime.high) << 32 | fileTime.low, intervals);
  SystemTime back{};
  ASSERT_TRUE(FileTimeToSystemTime(fileTime, &back));
  ASSERT_EQ(FieldsOf(back), FieldsOf(time));
}

TEST(Calendar, ConvertsBothWaysOnEveryDayOfFourCenturies) {
  ExpectSame({1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000);
  ExpectSame({2024, 2, 4, 29, 23, 59, 59, 999}, 133537247999990000);
  ExpectSame({30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000);
  FileTime fileTime{};
  SystemTime time{};
  const SystemTime bad[] = {{2023, 13, 0, 1, 0, 0, 0, 0},  {1600, 12, 0, 31, 0, 0, 0, 0}, {2023, 1, 0, 1, 24, 0, 0, 0},
                            {2023, 1, 0, 1, 0, 60, 0, 0},  {2023, 1, 0, 1, 0, 0, 60, 0},  {2023, 1, 0, 0, 0, 0, 0, 0},
                            {2023, 1, 0, 1, 0, 0, 0, 1000}};
  for (const SystemTime& row : bad) EXPECT_FALSE(SystemTimeToFileTime(row, &fileTime)) << &row - bad;
  EXPECT_FALSE(FileTimeToSystemTime({0, 0x80000000}, &time));
  constexpr std::uint16_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  std::int64_t day = 0;
  for (std::uint16_t year = 1601; year <= 2001; ++year)
    for (std::uint16_t month = 1; month <= 12; ++month) {
      const bool leap = month == 2 && year % 4 == 0 && (year % 100 != 0 || year == 2000);
      for (std::uint16_t dayOfMonth = 1; dayOfMonth <= kDays[month - 1] + (leap ? 1 : 0); ++dayOfMonth) {
        const auto dayOfWeek = static_cast<std::uint16_t>(++day % 7);
        ExpectSame({year, month, dayOfWeek, dayOfMonth, 23, 59, 59, 999}, day * kDay - 10000);
        if (HasFatalFailure()) return;
      }
    }
}

/// The tests run with TZ naming UTC.
TEST(Clock, TellsTheTimeOfTheStandardLibrary) {
  SystemTime local{};
  FileTime system{}, fromLocal{};
  const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
  GetSystemTimeAsFileTime(&system);
  GetLocalTime(&local);
  ASSERT_TRUE(SystemTimeToFileTime(local, &fromLocal));
  for (const FileTime& time : {system, fromLocal}) {
    const auto intervals = static_cast<std::int64_t>(time.high) << 32 | time.low;
    EXPECT_NEAR(static_cast<double>(intervals - 116444736000000000) / 1e7, now.count(), 0.5);
  }
}

/// The tests run with LC_ALL=C, which is no user's setting.
TEST(LocaleForms, AreEnglishWithoutASetting) {
  const SystemTime time{2024, 3, 0, 4, 13, 5, 9, 0};
  char16_t text[64] = {};
  const auto date = [&](std::uint32_t flags, const char16_t* picture) {
    const int units = GetDateFormatW(flags, time, picture, text, 64);
    EXPECT_EQ(units, GetDateFormatW(flags, time, picture, nullptr, 0));
    EXPECT_EQ(static_cast<std::size_t>(units), std::u16string(text).size() + 1);
    return std::u16string(text);
  };
  EXPECT_EQ(date(DATE_SHORTDATE, nullptr), u"3/4/2024");
  EXPECT_EQ(date(DATE_LONGDATE, nullptr), u"Monday, March 4, 2024");
  EXPECT_EQ(date(0, u"ddd"), u"Mon");
  EXPECT_EQ(GetTimeFormatW(0, time, text, 64), 11);
  EXPECT_EQ(std::u16string(text), u"1:05:09 PM");
  EXPECT_EQ(GetTimeFormatW(TIME_NOSECONDS, time, text, 8), 8);
  EXPECT_EQ(std::u16string(text), u"1:05 PM");
  EXPECT_EQ(GetTimeFormatW(TIME_NOSECONDS, time, text, 7), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

}  // namespace
