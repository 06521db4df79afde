#include "platform/clock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;

namespace {

std::int64_t Intervals(const FileTime& time) {
  return static_cast<std::int64_t>(time.high) << 32 | time.low;
}

FileTime FromIntervals(std::int64_t intervals) {
  return {static_cast<std::uint32_t>(intervals), static_cast<std::uint32_t>(intervals >> 32)};
}

using Fields = std::vector<int>;
Fields FieldsOf(const SystemTime& time) {
  return {time.year, time.month, time.dayOfWeek, time.day, time.hour, time.minute, time.second, time.milliseconds};
}

struct Instant {
  const char* name;
  SystemTime time;
  std::int64_t intervals;
};

class Calendar : public testing::TestWithParam<Instant> {};

TEST_P(Calendar, ConvertsBothWays) {
  FileTime fileTime{};
  ASSERT_TRUE(SystemTimeToFileTime(GetParam().time, &fileTime));
  EXPECT_EQ(Intervals(fileTime), GetParam().intervals);
  SystemTime time{};
  ASSERT_TRUE(FileTimeToSystemTime(fileTime, &time));
  EXPECT_EQ(FieldsOf(time), FieldsOf(GetParam().time));
}

INSTANTIATE_TEST_SUITE_P(, Calendar,
                         testing::ValuesIn(std::vector<Instant>{
                             {"First", {1601, 1, 1, 1, 0, 0, 0, 0}, 0},
                             {"Epoch", {1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000},
                             {"LeapDay", {2024, 2, 4, 29, 23, 59, 59, 999}, 133537247999990000},
                             {"BehindTheLeapDay", {2024, 3, 5, 1, 0, 0, 0, 0}, 133537248000000000},
                             {"LeapCentury", {2000, 2, 2, 29, 12, 0, 0, 1}, 125962992000010000},
                             {"EndOf400Years", {2000, 12, 0, 31, 0, 0, 0, 0}, 126226944000000000},
                             {"CommonCentury", {2100, 3, 1, 1, 0, 0, 0, 0}, 157520160000000000},
                             {"LastOfTheLastYear", {30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST(CalendarDays, EveryDayOfFourCenturiesFollowsTheOneBefore) {
  constexpr std::int64_t kDay = 864'000'000'000;
  SystemTime previous{1600, 12, 0, 31, 0, 0, 0, 0};
  for (std::int64_t day = 0; day < 2 * 146097; ++day) {
    SystemTime time{};
    ASSERT_TRUE(FileTimeToSystemTime(FromIntervals(day * kDay + kDay - 1), &time));
    FileTime back{};
    ASSERT_TRUE(SystemTimeToFileTime(time, &back));
    ASSERT_EQ(Intervals(back), day * kDay + kDay - 10000);
    ASSERT_EQ(time.dayOfWeek, (previous.dayOfWeek + 1) % 7);
    const bool sameMonth = time.month == previous.month;
    ASSERT_EQ(time.day, sameMonth ? previous.day + 1 : 1) << day;
    ASSERT_EQ(time.month, sameMonth ? previous.month : previous.month % 12 + 1) << day;
    ASSERT_EQ(time.year, previous.year + (!sameMonth && time.month == 1)) << day;
    previous = time;
  }
}

TEST(CalendarDays, RefusesWhatIsNoDateOrTime) {
  const SystemTime good{2023, 6, 0, 15, 12, 30, 30, 500};
  struct {
    std::uint16_t SystemTime::*field;
    std::uint16_t value;
  } const rows[] = {
      {&SystemTime::year, 1600}, {&SystemTime::month, 0},   {&SystemTime::month, 13},
      {&SystemTime::day, 0},     {&SystemTime::day, 31},    {&SystemTime::hour, 24},
      {&SystemTime::minute, 60}, {&SystemTime::second, 60}, {&SystemTime::milliseconds, 1000},
  };
  for (const auto& row : rows) {
    SystemTime time = good;
    time.*row.field = row.value;
    FileTime fileTime{};
    SetLastError(0);
    EXPECT_FALSE(SystemTimeToFileTime(time, &fileTime)) << row.value;
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
  SystemTime time{};
  EXPECT_TRUE(FileTimeToSystemTime({0xFFFFFFFF, 0x7FFFFFFF}, &time));
  EXPECT_EQ(FieldsOf(time), (Fields{30828, 9, 4, 14, 2, 48, 5, 477}));
  EXPECT_FALSE(FileTimeToSystemTime({0, 0x80000000}, &time));
}

/// The tests run with LC_ALL naming a locale without a user.
TEST(LocaleForms, AreEnglishWithoutASetting) {
  const SystemTime time{2024, 3, 0, 4, 13, 5, 9, 0};
  const auto date = [&](std::uint32_t flags, const char16_t* picture) {
    char16_t text[64] = {};
    const int units = GetDateFormatW(flags, time, picture, text, 64);
    EXPECT_EQ(units, GetDateFormatW(flags, time, picture, nullptr, 0));
    EXPECT_EQ(static_cast<std::size_t>(units), std::u16string(text).size() + 1);
    return std::u16string(text);
  };
  EXPECT_EQ(date(DATE_SHORTDATE, nullptr), u"3/4/2024");
  EXPECT_EQ(date(DATE_LONGDATE, nullptr), u"Monday, March 4, 2024");
  EXPECT_EQ(date(0, u"ddd"), u"Mon");
  char16_t text[64] = {};
  EXPECT_EQ(GetTimeFormatW(0, time, text, 64), 11);
  EXPECT_EQ(std::u16string(text), u"1:05:09 PM");
  EXPECT_EQ(GetTimeFormatW(TIME_NOSECONDS, time, text, 8), 8);
  EXPECT_EQ(std::u16string(text), u"1:05 PM");
  EXPECT_EQ(GetTimeFormatW(TIME_NOSECONDS, time, text, 7), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

}  // namespace
