/// Points in time: their word, their texts in both directions, and the time zone's transitions.
#include "time/date_time.h"

#include <cstdlib>
#include <map>

#include "thrown.h"
#include "time/date_time_parser.h"
#include "time/date_time_text.h"
#include "time/time_zone_transitions.h"

namespace Kestrel {
namespace {

using namespace std::string_view_literals;

constexpr std::int64_t kMax = 0xFFFFFFFFFFFF;
constexpr std::int64_t kMinute = 60000;
constexpr char kUnderflow[] =
    "EKestrelDateTime 13: SetUTCMilliseconds(): Internal milliseconds underflow. A year below 1601 is not supported.";

std::string Shown(const platform::SystemTime& time) {
  return SystemTimeToStr(time, dtsmDateTime | dtsmDashes);
}

std::int64_t Milliseconds(std::u16string_view text) {
  return SystemTimeToMilliseconds(ParseSystemTime(text));
}

TEST(DateTime, KeepsMillisecondsAndBiasInOneWordOrRefusesThem) {
  const auto kUtc = TKestrelDateTime::kUtc;
  const auto kLocal = TKestrelDateTime::kLocal;
  const std::string overflow = "EKestrelDateTime 13: SetUTCMilliseconds(): Internal milliseconds overflow.";
  const struct {
    int kind;
    std::int64_t milliseconds;
    std::int16_t bias;
    std::uint64_t word;
    std::string thrown = {};
  } rows[] = {
      {kUtc, kMax, 480, 0x01E0'FFFF'FFFF'FFFF},
      {kLocal, 60 * kMinute, -60, 0xFFC4'0000'0000'0000},
      {kUtc, -1, 0, 5, kUnderflow},
      {2, 60 * kMinute - 1, -60, 5, kUnderflow},  // local, as every kind but UTC
      {kUtc, kMax + 1, 0, 5, overflow},
      {kLocal, std::numeric_limits<std::int64_t>::max(), 32767, 5, overflow},
  };
  for (const auto& row : rows) {
    TKestrelDateTime value(5);
    EXPECT_EQ(ErrorOf([&] { value.SetUTCMilliseconds(row.kind, row.milliseconds, row.bias); }), row.thrown);
    EXPECT_EQ(value.GetWord(), row.word);
    EXPECT_EQ(value.GetBiasMinutes(), row.word == 5 ? 0 : row.bias);
  }
}

TEST(DateTime, ConvertsToLocalSystemTime) {
  TKestrelDateTime value;
  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, kMinute - 1, 1);
  const std::string error = SystemErrorOf([&] { value.ToLocalSystemTime(); });
  EXPECT_TRUE(error.ends_with("] in Kestrel::FileTimeToSystemTime")) << error;
  value.SetUTCMilliseconds(TKestrelDateTime::kUtc, 13359025230123, -120);
  EXPECT_EQ(Shown(value.ToLocalSystemTime()), "2024-05-01 10:20:30.123");
  platform::SystemTime clock;
  platform::GetLocalTime(&clock);
  const std::int64_t now = SystemTimeToMilliseconds(TKestrelDateTime::Now().ToLocalSystemTime());
  EXPECT_LT(std::abs(now - SystemTimeToMilliseconds(clock)), kMinute);
}

TEST(DateTimeText, HasTheFixedForms) {
  const auto shown = [](std::uint32_t mode, std::uint16_t second, std::uint16_t milliseconds) {
    const platform::SystemTime value = {2024, 5, 3, 1, 3, 4, second, milliseconds};
    const std::string text = SystemTimeToStr(value, mode);
    EXPECT_EQ(SystemTimeToWideStr(value, mode), std::u16string(text.begin(), text.end()));
    return text;
  };
  constexpr std::uint32_t kTime = dtsmTime | dtsmDashes;
  EXPECT_EQ(shown(dtsmDate | dtsmDashes | dtsmQuoted, 9, 7), "'2024-05-01'");
  EXPECT_EQ(shown(dtsmSlashes | dtsmQuoted | dtsmNoSeconds, 9, 7), "\"2024/05/01 03:04\"");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 0, 7), "03:04:00.007");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 9, 0), "03:04:09");
  EXPECT_EQ(shown(kTime | dtsmDropZeros, 0, 0), "03:04");
  EXPECT_EQ(shown(kTime | dtsmDropZeros | dtsmNoMilliseconds, 0, 7), "03:04:00");
}

TEST(DateTimeText, HasTheFormsOfTheLocale) {
  const platform::SystemTime value = {2024, 3, 0, 4, 13, 5, 9, 0};
  EXPECT_EQ(SystemTimeToStr(value, dtsmLongDate), "Monday, March 4, 2024 1:05:09 PM");
  EXPECT_EQ(SystemTimeToStr(value, dtsmDayOfWeek | dtsmNoSeconds), "Mon 1:05 PM");
  EXPECT_EQ(SystemTimeToWideStr(value, dtsmDate), u"3/4/2024");
}

TEST(DateTimeText, NamesWhatFailed) {
  const auto error = [](std::uint16_t month, std::uint16_t hour, std::uint32_t mode) {
    return SystemErrorOf([=] { SystemTimeToStr({2024, month, 0, 1, hour, 0, 0, 0}, mode); });
  };
  // The numbers are the system's.
  EXPECT_TRUE(error(13, 0, dtsmDateTime).ends_with("] in TKestrelDateTime::SystemTimeToStr::GetDateFormat"));
  EXPECT_TRUE(error(1, 24, dtsmDateTime).ends_with("] in TKestrelDateTime::SystemTimeToStr::GetTimeFormat"));
  EXPECT_EQ(error(1, 0, 3 | dtsmSlashes), "EKestrelDateTime 2: Invalid mode of date/time string.");
  EXPECT_EQ(error(1, 0, 0x30000), "EKestrelDateTime 2: Invalid format of date/time string.");
}

/// Outcomes, which are the value as text or what was thrown, and the texts that have them.
using ParseRows = std::vector<std::pair<std::string, std::vector<std::u16string_view>>>;

template <class Parse>
void ExpectOutcomes(const ParseRows& rows, Parse parse) {
  for (const auto& [outcome, texts] : rows) {
    for (const std::u16string_view text : texts) {
      std::string value;
      const std::string thrown = ErrorOf([&] { value = parse(text); });
      EXPECT_EQ(value.empty() ? thrown : value, outcome) << testing::PrintToString(text);
    }
  }
}

std::string Bad(const std::string& numberAndPart, const std::string& range) {
  return "EKestrelDateTime " + numberAndPart + " part in date/time string. Expected a number from " + range + ".";
}

TEST(DateTimeParser, GivesTheTimeOrTheStatedError) {
  const std::string end = "EKestrelDateTime 12: End of date/time string ";
  ExpectOutcomes(
      {
          {"2024-05-01 00:00:00.000", {u"2024-05-01", u"  2024/5/1", u"2024-05-01  ", u"2024-05-01\0garbage"sv}},
          {"9999-12-31 23:59:59.999", {u"9999-12-31T23:59:59.999"}},
          {"2000-02-29 00:00:00.000", {u"2000-02-29"}},
          {"2024-05-01 10:20:30.005", {u"2024-05-01   10:20:30,5"}},
          {Bad("3: Invalid year", "1601 to 9999"), {u"", u"1600-01-01", u"10000-01-01", u"4294969320-01-01"}},
          {Bad("4: Invalid month", "1 to 12"), {u"2024-0-01", u"2024-13-01"}},
          {Bad("5: Invalid day", "1 to 29"), {u"2024-02-30"}},
          {Bad("5: Invalid day", "1 to 28"), {u"1900-02-29"}},
          {Bad("5: Invalid day", "1 to 31"), {u"2024-05-00"}},
          {Bad("6: Invalid hour", "0 to 23"), {u"2024-05-01Tx", u"2024-05-01 24:00"}},
          {Bad("7: Invalid minute", "0 to 59"), {u"2024-05-01 10:60"}},
          {Bad("8: Invalid second", "0 to 59"), {u"2024-05-01 10:20:", u"2024-05-01 10:20:60"}},
          {Bad("9: Invalid millisecond", "0 to 999"), {u"2024-05-01 10:20:30.1000"}},
          {"EKestrelDateTime 10: '/' or '-' expected.", {u"2024.05.01"}},
          {"EKestrelDateTime 10: '/' expected.", {u"2024/05-01"}},
          {"EKestrelDateTime 10: ' ' or 'T' expected.", {u"2024-05-01x"}},
          {"EKestrelDateTime 10: ':' expected.", {u"2024-05-01 10"}},
          {"EKestrelDateTime 14: Time expected after T separator.", {u"2024-05-01T"}},
          {end + "or \"Hour\" expected.", {u"2024-05-01 x"}},
          {end + "or \":Seconds\" expected.", {u"2024-05-01 10:20x", u"2024-05-01 10:20.5"}},
          {end + "or \",Milliseconds or .Milliseconds\" expected.", {u"2024-05-01 10:20:30 "}},
          {end + "expected.", {u"2024-05-01 10:20:30.5 "}},
      },
      [](std::u16string_view text) { return Shown(ParseSystemTime(text)); });
}

TEST(DateTimeParser, GivesTheBiasOrTheStatedError) {
  ExpectOutcomes(
      {
          {"-120", {u"UTC+02:00"}},
          {"210", {u"  gMt - 03:30 "}},
          {"-30", {u"+01:30"}},  // not -90
          {"-781", {u"14:59"}},
          {"5", {u"-0:5"}},
          {Bad("6: Invalid hour", "0 to 14"),
           {u"UTC", u"", u"+15:00", u"+002:00", u"CET+02:00", u"UTCGMT+02:00", u"-+1:00", u"+-1:00"}},
          {"EKestrelDateTime 10: ':' expected.", {u"+02"}},
          {Bad("7: Invalid minute", "0 to 59"), {u"+02:60", u"+02:000"}},
          {"EKestrelDateTime 12: End of date/time string expected.", {u"+02:00 x"}},
      },
      [](std::u16string_view text) { return std::to_string(ParseZoneBias(text)); });
}

TEST(DateTimeParser, ReadsATimeOfAZone) {
  ExpectOutcomes(
      {
          {"2024/05/01 10:20:30,123 GMT+02:00", {u"2024-05-01 10:20:30.123 UTC+02:00"}},
          {"2024/05/01 00:00:00,000 GMT-03:30", {u"2024-05-01 -03:30"}},
          {"2024/05/01 00:00:00,000 GMT+00:00", {u"2024-05-01 UTC 0:0"}},
          {"2024/05/01 09:20:00,000 GMT+02:00", {u"2024-05-01 9:20 +02:00"}},
          {"2024/05/01 10:20:00,000 GMT+00:30", {u"2024-05-01T10:20+01:30"}},
          {Bad("6: Invalid hour", "0 to 14"), {u"2024-05-01 10:20:30", u"2024-05-01"}},
          {kUnderflow, {u"1601-01-01 +01:00"}},
      },
      [](std::u16string_view text) { return BiasToStr(ParseDateTime(text)); });
}

TEST(TimeZones, FindTheYear) {
  const auto end = [](int year) {
    const platform::SystemTime last = {static_cast<std::uint16_t>(year), 12, 0, 31, 23, 59, 59, 999};
    return static_cast<std::uint64_t>(SystemTimeToMilliseconds(last));
  };
  for (const int year : {1601, 1604, 1700, 1701, 2000, 2001, 2023, 2024, 2100, 30826}) {
    EXPECT_EQ(YearFromMilliseconds(end(year)), year);
    EXPECT_EQ(YearFromMilliseconds(end(year) + 1), year + 1);
  }
  EXPECT_EQ(YearFromMilliseconds(0), 1601);
  const std::string late = ErrorOf([=] { YearFromMilliseconds(end(30827) + 1); });
  EXPECT_EQ(late, "EKestrelDateTime 13: YearFromMilliseconds: Year/Century out of range.");
}

platform::TimeZoneInformation Zone(std::int32_t bias, platform::SystemTime toStandard,
                                   platform::SystemTime toDaylight) {
  return {bias, {}, toStandard, 0, {}, toDaylight, -60};
}
const platform::TimeZoneInformation kBerlin = Zone(-60, {0, 10, 0, 5, 3, 0, 0, 0}, {0, 3, 0, 5, 2, 0, 0, 0});
const platform::TimeZoneInformation kSydney = Zone(-600, {0, 4, 0, 1, 3, 0, 0, 0}, {0, 10, 0, 1, 2, 0, 0, 0});

TEST(TimeZones, FindTheTransitionsOrRefuseThem) {
  const std::pair<platform::SystemTime, std::u16string_view> rows[] = {
      {{0, 10, 0, 5, 3, 0, 0, 0}, u"2024-10-27 03:00"},             // last Sunday
      {{0, 2, 4, 5, 23, 59, 59, 999}, u"2024-02-29 23:59:59.999"},  // a fifth Thursday
      {{0, 2, 5, 5, 0, 0, 0, 0}, u"2024-02-23"},                    // no fifth Friday
      {{0, 9, 0, 1, 0, 0, 0, 0}, u"2024-09-01"},                    // the month begins with it
      {{2024, 4, 0, 7, 2, 0, 0, 0}, u"2024-04-07 02:00"},
  };
  for (const auto& [rule, in2024] : rows) {
    EXPECT_EQ(GetTimeZoneTransitions(2024, Zone(0, rule, rows[0].first)).toStandard, Milliseconds(in2024));
    EXPECT_EQ(GetTimeZoneTransitions(2024, Zone(0, rows[0].first, rule)).toDaylight, Milliseconds(in2024));
  }

  EXPECT_EQ(GetTimeZoneTransitions(2024, kBerlin).toStandard, Milliseconds(u"2024-10-27 03:00"));
  EXPECT_EQ(GetTimeZoneTransitions(2025, kBerlin).toStandard, Milliseconds(u"2025-10-26 03:00"));

  const auto error = [](const platform::SystemTime& rule) {
    return ErrorOf([&] { GetTimeZoneTransitions(2024, Zone(0, kBerlin.standardDate, rule)); });
  };
  const platform::SystemTime invalid[] = {
      {0, 0, 0, 1, 0, 0, 0, 0}, {0, 13, 0, 1, 0, 0, 0, 0}, {0, 3, 0, 0, 0, 0, 0, 0},    {0, 3, 0, 6, 0, 0, 0, 0},
      {0, 3, 7, 1, 0, 0, 0, 0}, {0, 3, 0, 1, 24, 0, 0, 0}, {2024, 2, 0, 30, 0, 0, 0, 0}};
  for (const auto& rule : invalid)
    EXPECT_EQ(error(rule), "EKestrelDateTime 1: Transition date of time zone is not valid.");
  EXPECT_EQ(error({2023, 3, 0, 1, 0, 0, 0, 0}),
            "EKestrelDateTime 1: Transition date error in absolute format. Year not equal.");
}

TEST(TimeZones, TellTheBiasInForce) {
  const auto change = [](const platform::TimeZoneInformation& zone, std::u16string_view utc) {
    const auto time = static_cast<std::uint64_t>(Milliseconds(utc));
    return std::pair<int, int>(BiasAt(time - 1, zone), BiasAt(time, zone));
  };
  EXPECT_EQ(BiasAt(0, Zone(30, {}, {})), 30);
  EXPECT_EQ(change(kBerlin, u"2024-03-31 01:00"), std::pair(-60, -120));
  EXPECT_EQ(change(kBerlin, u"2024-10-27 01:00"), std::pair(-120, -60));
  EXPECT_EQ(change(kSydney, u"2024-04-06 16:00"), std::pair(-660, -600));
  EXPECT_EQ(change(kSydney, u"2024-10-05 16:00"), std::pair(-600, -660));
  auto withStandardBias = kBerlin;
  withStandardBias.standardBias = 30;
  EXPECT_EQ(change(withStandardBias, u"2024-03-31 01:30"), std::pair(-30, -120));
  const auto in2025 = Zone(-60, {2025, 10, 0, 26, 3, 0, 0, 0}, {2025, 3, 0, 30, 2, 0, 0, 0});
  EXPECT_EQ(BiasAt(static_cast<std::uint64_t>(Milliseconds(u"2024-12-31 23:30")), in2025), -60) << "2025 there";

  const auto localChange = [](const auto& zone, std::u16string_view local) {
    return std::pair<int, int>(BiasAtLocal(Milliseconds(local) - 1, zone), BiasAtLocal(Milliseconds(local), zone));
  };
  EXPECT_EQ(BiasAtLocal(0, Zone(30, {}, {})), 30);
  EXPECT_EQ(BiasAtLocal(0, kBerlin), -60);
  EXPECT_EQ(localChange(kBerlin, u"2024-03-31 03:00"), std::pair(-60, -120));  // 02:00 to 03:00 does not exist
  EXPECT_EQ(localChange(kBerlin, u"2024-10-27 02:00"), std::pair(-120, -60));  // 02:00 to 03:00 comes twice
  EXPECT_EQ(localChange(kSydney, u"2024-10-06 03:00"), std::pair(-600, -660));
  EXPECT_EQ(localChange(kSydney, u"2024-04-07 02:00"), std::pair(-660, -600));
}

/// The program runs in several zones, as TZ says.
TEST(TimeZones, OfTheMachineGivesTheBiasOfATextWithoutOne) {
  const std::map<std::string, std::string> januaryAndJuly = {{"UTC", "+00:00 +00:00"},
                                                             {"Asia/Kolkata", "+05:30 +05:30"},
                                                             {"America/St_Johns", "-03:30 -02:30"},
                                                             {"Pacific/Chatham", "+13:45 +12:45"}};
  const char* const zone = std::getenv("TZ");
  const auto row = januaryAndJuly.find(zone ? zone : "");
  if (row == januaryAndJuly.end()) GTEST_SKIP() << "started without one of the zones";
  const auto bias = [](std::u16string_view text) { return BiasToStr(ParseLocalDateTime(text)).substr(27); };
  EXPECT_EQ(bias(u"2025-01-15 12:00") + " " + bias(u"2025-07-15 12:00"), row->second);
}

}  // namespace
}  // namespace Kestrel
