#include "base/date_time.h"

#include "base/date_time_parser.h"
#include "base/date_time_text.h"
#include "base/time_zone_transitions.h"
#include "thrown.h"

namespace Kestrel {
namespace {

constexpr std::uint64_t kMax = 0xFFFFFFFFFFFF;
constexpr std::int64_t kMinute = 60000;

std::string Shown(const platform::SystemTime& time) {
  return SystemTimeToStr(time, dtsmDateTime | dtsmDashes);
}

std::int64_t Milliseconds(std::u16string_view text) {
  return SystemTimeToMilliseconds(ParseSystemTime(text));
}

TEST(DateTime, KeepsMillisecondsAndBiasInOneWord) {
  const auto word = [](int kind, std::uint64_t milliseconds, std::int16_t bias) {
    TKestrelDateTime value;
    value.SetUTCMilliseconds(kind, static_cast<std::int64_t>(milliseconds), bias);
    EXPECT_EQ(value.GetBiasMinutes(), bias);
    return value.GetWord();
  };
  EXPECT_EQ(word(TKestrelDateTime::kUtc, 0, 0), 0u);
  EXPECT_EQ(word(TKestrelDateTime::kUtc, 0, -60), 0xFFC4'0000'0000'0000);
  EXPECT_EQ(word(TKestrelDateTime::kUtc, kMax, 480), 0x01E0'FFFF'FFFF'FFFF);
  EXPECT_EQ(word(TKestrelDateTime::kLocal, 60 * kMinute, -60), 0xFFC4'0000'0000'0000);
  EXPECT_EQ(word(7, kMax - 2 * kMinute, 2), 0x0002'FFFF'FFFF'FFFF);
}

TEST(DateTime, RefusesWhatIsOutsideItsRange) {
  const std::string underflow =
      "5/13 SetUTCMilliseconds(): Internal milliseconds underflow. A year below 1601 is not supported.";
  const std::string overflow = "5/13 SetUTCMilliseconds(): Internal milliseconds overflow.";
  TKestrelDateTime value(5);
  const auto set = [&](int kind, std::int64_t milliseconds, std::int16_t bias) {
    return ErrorOf([&] { value.SetUTCMilliseconds(kind, milliseconds, bias); });
  };
  EXPECT_EQ(set(TKestrelDateTime::kUtc, -1, 0), underflow);
  EXPECT_EQ(set(TKestrelDateTime::kLocal, 60 * kMinute - 1, -60), underflow);
  EXPECT_EQ(set(TKestrelDateTime::kLocal, std::numeric_limits<std::int64_t>::min(), -32768), underflow);
  EXPECT_EQ(set(TKestrelDateTime::kUtc, std::int64_t{kMax} + 1, 0), overflow);
  EXPECT_EQ(set(TKestrelDateTime::kLocal, std::int64_t{kMax}, 1), overflow);
  EXPECT_EQ(set(TKestrelDateTime::kLocal, std::numeric_limits<std::int64_t>::max(), 32767), overflow);
  EXPECT_EQ(value.GetWord(), 5u);
}

TEST(DateTime, ConvertsToLocalSystemTime) {
  TKestrelDateTime value;
  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, 13359025230123, -120);
  EXPECT_EQ(Shown(value.ToLocalSystemTime()), "2024-05-01 10:20:30.123");
  EXPECT_EQ(BiasToStr(value), "2024/05/01 10:20:30,123 GMT+02:00");
  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, 13359025230123, 210);
  EXPECT_EQ(BiasToStr(value), "2024/05/01 04:50:30,123 GMT-03:30");
  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, 13359025230123, 0);
  EXPECT_EQ(BiasToStr(value), "2024/05/01 08:20:30,123 GMT+00:00");

  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, kMinute - 1, 1);
  EXPECT_TRUE(SystemErrorOf([&] { value.ToLocalSystemTime(); }).ends_with("] in Kestrel::FileTimeToSystemTime"));
}

TEST(DateTime, NowAgreesWithTheLocalClock) {
  platform::SystemTime before, after;
  std::string now;
  do {  // until no minute begins in between
    platform::GetLocalTime(&before);
    now = Shown(TKestrelDateTime::Now().ToLocalSystemTime());
    platform::GetLocalTime(&after);
  } while (before.minute != after.minute);
  EXPECT_EQ(now.substr(0, 16), Shown(before).substr(0, 16));
}

TEST(DateTimeText, HasTheFixedForms) {
  const auto shown = [](std::uint32_t mode, std::uint16_t second, std::uint16_t milliseconds) {
    const platform::SystemTime value = {2024, 5, 3, 1, 3, 4, second, milliseconds};
    const std::string text = SystemTimeToStr(value, mode);
    EXPECT_EQ(SystemTimeToWideStr(value, mode), std::u16string(text.begin(), text.end()));
    return text;
  };
  constexpr std::uint32_t kTime = dtsmTime | dtsmDashes;
  EXPECT_EQ(shown(dtsmDateTime | dtsmSlashes, 9, 7), "2024/05/01 03:04:09,007");
  EXPECT_EQ(shown(dtsmDateTime | dtsmDashes, 9, 7), "2024-05-01 03:04:09.007");
  EXPECT_EQ(shown(dtsmDate | dtsmDashes | dtsmQuoted, 9, 7), "'2024-05-01'");
  EXPECT_EQ(shown(dtsmSlashes | dtsmQuoted | dtsmNoSeconds, 9, 7), "\"2024/05/01 03:04\"");
  EXPECT_EQ(shown(kTime | dtsmNoMilliseconds, 0, 0), "03:04:00");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 0, 7), "03:04:00.007");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 9, 0), "03:04:09");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 0, 0), "03:04");
  EXPECT_EQ(shown(kTime | dtsmDropZeros | dtsmNoMilliseconds, 0, 7), "03:04:00");
  constexpr std::uint16_t m = 65535;
  EXPECT_EQ(Shown({m, m, m, m, m, m, m, m}), "65535-65535-65535 65535:65535:65535.65535");
}

TEST(DateTimeText, TakesTheLocaleFormsFromTheSystem) {
  const platform::SystemTime value = {2024, 3, 1, 4, 13, 5, 9, 0};
  const auto date = [&](std::uint32_t flags, const char16_t* picture) {
    char16_t text[100];
    return std::u16string(text, platform::GetDateFormatW(flags, value, picture, text, 100) - 1u);
  };
  const auto time = [&](std::uint32_t flags) {
    char16_t text[100];
    return std::u16string(text, platform::GetTimeFormatW(flags, value, text, 100) - 1u);
  };
  EXPECT_EQ(SystemTimeToWideStr(value, dtsmDateTime), date(platform::DATE_SHORTDATE, nullptr) + u" " + time(0));
  EXPECT_EQ(SystemTimeToWideStr(value, dtsmDate | dtsmLongDate), date(platform::DATE_LONGDATE, nullptr));
  EXPECT_EQ(SystemTimeToWideStr(value, dtsmDate | dtsmDayOfWeek | dtsmLongDate), date(0, u"ddd"));
  EXPECT_EQ(SystemTimeToWideStr(value, dtsmTime | dtsmNoSeconds | dtsmQuoted), time(platform::TIME_NOSECONDS));
}

TEST(DateTimeText, NamesWhatFailed) {
  const auto error = [](std::uint16_t month, std::uint16_t hour, std::uint32_t mode) {
    return SystemErrorOf([=] { SystemTimeToStr({2024, month, 0, 1, hour, 0, 0, 0}, mode); });
  };
  // The numbers are the system's.
  EXPECT_TRUE(error(13, 0, dtsmDateTime).ends_with("] in TKestrelDateTime::SystemTimeToStr::GetDateFormat"));
  EXPECT_TRUE(error(1, 24, dtsmDateTime).ends_with("] in TKestrelDateTime::SystemTimeToStr::GetTimeFormat"));
  for (const std::uint32_t mode : {3u, 0xFFu, 3u | dtsmSlashes}) {
    EXPECT_EQ(error(1, 0, mode), "5/2 Invalid mode of date/time string.");
  }
  EXPECT_EQ(error(1, 0, 0x30000), "5/2 Invalid format of date/time string.");
}

TEST(TimeZones, FindTheYear) {
  constexpr std::uint16_t kYears[] = {1601, 1604, 1700, 1701, 1800, 1999, 2000, 2001, 2023, 2024, 2100, 30827};
  for (const std::uint16_t year : kYears) {
    const auto begin = static_cast<std::uint64_t>(SystemTimeToMilliseconds({year, 1, 0, 1, 0, 0, 0, 0}));
    const auto end = static_cast<std::uint64_t>(SystemTimeToMilliseconds({year, 12, 0, 31, 23, 59, 59, 999}));
    EXPECT_EQ(YearFromMilliseconds(begin), year);
    EXPECT_EQ(YearFromMilliseconds(end), year);
    if (year != 30827) continue;
    const std::string outOfRange = "5/13 YearFromMilliseconds: Year/Century out of range.";
    EXPECT_EQ(ErrorOf([=] { YearFromMilliseconds(end + 1); }), outOfRange);
    EXPECT_EQ(ErrorOf([] { YearFromMilliseconds(~std::uint64_t{0}); }), outOfRange);
  }
}

platform::TimeZoneInformation Zone(std::int32_t bias, platform::SystemTime toStandard,
                                   platform::SystemTime toDaylight) {
  return {bias, {}, toStandard, 0, {}, toDaylight, -60};
}
const platform::TimeZoneInformation kBerlin = Zone(-60, {0, 10, 0, 5, 3, 0, 0, 0}, {0, 3, 0, 5, 2, 0, 0, 0});
const platform::TimeZoneInformation kSydney = Zone(-600, {0, 4, 0, 1, 3, 0, 0, 0}, {0, 10, 0, 1, 2, 0, 0, 0});

TEST(TimeZones, FindTheTransitions) {
  struct Row {
    platform::SystemTime rule;
    std::u16string_view in2024;
  };
  const Row rows[] = {
      {{0, 10, 0, 5, 3, 0, 0, 0}, u"2024-10-27 03:00"},             // last Sunday
      {{0, 2, 4, 5, 23, 59, 59, 999}, u"2024-02-29 23:59:59.999"},  // a fifth Thursday
      {{0, 2, 5, 5, 0, 0, 0, 0}, u"2024-02-23"},                    // no fifth Friday
      {{0, 3, 0, 2, 2, 0, 0, 0}, u"2024-03-10 02:00"},
      {{0, 9, 0, 1, 0, 0, 0, 0}, u"2024-09-01"},  // the month begins with it
      {{0, 12, 6, 1, 0, 0, 0, 0}, u"2024-12-07"},
      {{2024, 4, 0, 7, 2, 0, 0, 0}, u"2024-04-07 02:00"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(GetTimeZoneTransitions(2024, Zone(0, row.rule, rows[0].rule)).toStandard, Milliseconds(row.in2024));
    EXPECT_EQ(GetTimeZoneTransitions(2024, Zone(0, rows[0].rule, row.rule)).toDaylight, Milliseconds(row.in2024));
  }
  EXPECT_EQ(GetTimeZoneTransitions(2023, kBerlin).toStandard, Milliseconds(u"2023-10-29 03:00"));
}

TEST(TimeZones, RefuseInvalidTransitions) {
  const std::string invalid = "5/1 Transition date of time zone is not valid.";
  const std::string otherYear = "5/1 Transition date error in absolute format. Year not equal.";
  const std::pair<platform::SystemTime, std::string> rows[] = {
      {{0, 0, 0, 1, 0, 0, 0, 0}, invalid},     {{0, 13, 0, 1, 0, 0, 0, 0}, invalid},
      {{0, 3, 0, 0, 0, 0, 0, 0}, invalid},     {{0, 3, 0, 6, 0, 0, 0, 0}, invalid},
      {{0, 3, 7, 1, 0, 0, 0, 0}, invalid},     {{0, 3, 0, 1, 24, 0, 0, 0}, invalid},
      {{2024, 2, 0, 30, 0, 0, 0, 0}, invalid}, {{2023, 3, 0, 1, 0, 0, 0, 0}, otherYear},
  };
  for (const auto& [rule, thrown] : rows) {
    EXPECT_EQ(ErrorOf([&rule = rule] { GetTimeZoneTransitions(2024, Zone(0, kBerlin.standardDate, rule)); }), thrown);
  }
}

TEST(TimeZones, TellTheBiasInForce) {
  const auto bias = [](const platform::TimeZoneInformation& zone, std::u16string_view utc) {
    return BiasAt(static_cast<std::uint64_t>(Milliseconds(utc)), zone);
  };
  EXPECT_EQ(bias(Zone(30, {}, {}), u"2024-07-01"), 30);
  EXPECT_EQ(bias(kBerlin, u"2024-03-31 00:59:59.999"), -60);
  EXPECT_EQ(bias(kBerlin, u"2024-03-31 01:00"), -120);
  EXPECT_EQ(bias(kBerlin, u"2024-10-27 00:59:59.999"), -120);
  EXPECT_EQ(bias(kBerlin, u"2024-10-27 01:00"), -60);
  EXPECT_EQ(bias(kSydney, u"2024-04-06 15:59:59.999"), -660);
  EXPECT_EQ(bias(kSydney, u"2024-04-06 16:00"), -600);
  EXPECT_EQ(bias(kSydney, u"2024-10-05 16:00"), -660);
  EXPECT_EQ(bias(kSydney, u"2024-12-31 13:30"), -660);
  EXPECT_EQ(bias(Zone(60, kBerlin.standardDate, kBerlin.daylightDate), u"1601-01-01"), 60);
}

}  // namespace
}  // namespace Kestrel
