#include "base/date_time_parser.h"

#include "base/date_time_text.h"
#include "thrown.h"

namespace Kestrel {
namespace {

/// The value's text, or what was thrown.
template <class Call>
std::string Outcome(Call call) {
  std::string value;
  const std::string thrown = ErrorOf([&] { value = call(); });
  return value.empty() ? thrown : value;
}

struct ParseRow {
  const char16_t* text;
  const char* outcome;
};

constexpr char kBadYear[] = "5/3 Invalid year part in date/time string. Expected a number from 1601 to 9999.";
constexpr char kEndOrHour[] = "5/12 End of date/time string or \"Hour\" expected.";
constexpr char kEndOrSeconds[] = "5/12 End of date/time string or \":Seconds\" expected.";
constexpr char kEndOrMilliseconds[] = "5/12 End of date/time string or \",Milliseconds or .Milliseconds\" expected.";

constexpr ParseRow kDates[] = {
    {u"2024-05-01", "2024-05-01 00:00:00.000"},
    {u"  2024/5/1", "2024-05-01 00:00:00.000"},
    {u"2024-05-01  ", "2024-05-01 00:00:00.000"},
    {u"9999-12-31T23:59:59.999", "9999-12-31 23:59:59.999"},
    {u"2024-05-01 10:20", "2024-05-01 10:20:00.000"},
    {u"2024-05-01   10:20:30,5", "2024-05-01 10:20:30.005"},
    {u"2024-05-01\0garbage", "2024-05-01 00:00:00.000"},

    {u"", kBadYear},
    {u"1600-01-01", kBadYear},
    {u"10000-01-01", kBadYear},
    {u"4294969320-01-01", kBadYear},
    {u"2024.05.01", "5/10 '/' or '-' expected."},
    {u"2024-0-01", "5/4 Invalid month part in date/time string. Expected a number from 1 to 12."},
    {u"2024-13-01", "5/4 Invalid month part in date/time string. Expected a number from 1 to 12."},
    {u"2024/05-01", "5/10 '/' expected."},
    {u"2024-02-30", "5/5 Invalid day part in date/time string. Expected a number from 1 to 29."},
    {u"1900-02-29", "5/5 Invalid day part in date/time string. Expected a number from 1 to 28."},
    {u"2024-05-00", "5/5 Invalid day part in date/time string. Expected a number from 1 to 31."},
    {u"2024-05-01x", "5/10 ' ' or 'T' expected."},
    {u"2024-05-01T", "5/14 Time expected after T separator."},
    {u"2024-05-01Tx", "5/6 Invalid hour part in date/time string. Expected a number from 0 to 23."},
    {u"2024-05-01 24:00", "5/6 Invalid hour part in date/time string. Expected a number from 0 to 23."},
    {u"2024-05-01 10", "5/10 ':' expected."},
    {u"2024-05-01 10:60", "5/7 Invalid minute part in date/time string. Expected a number from 0 to 59."},
    {u"2024-05-01 10:20:", "5/8 Invalid second part in date/time string. Expected a number from 0 to 59."},
    {u"2024-05-01 10:20:60", "5/8 Invalid second part in date/time string. Expected a number from 0 to 59."},
    {u"2024-05-01 10:20:30.1000", "5/9 Invalid millisecond part in date/time string. Expected a number from 0 to 999."},
    {u"2024-05-01 x", kEndOrHour},
    {u"2024-05-01 10:20x", kEndOrSeconds},
    {u"2024-05-01 10:20.5", kEndOrSeconds},
    {u"2024-05-01 10:20:30 ", kEndOrMilliseconds},
    {u"2024-05-01 10:20:30.5 ", "5/12 End of date/time string expected."},
};

TEST(DateTimeParser, GivesTheTimeOrTheStatedError) {
  for (const ParseRow& row : kDates) {
    EXPECT_EQ(Outcome([&row] { return SystemTimeToStr(ParseSystemTime(row.text), dtsmDashes); }), row.outcome)
        << testing::PrintToString(std::u16string(row.text));
  }
}

TEST(DateTimeParser, TellsHowFarADateGoes) {
  const auto consumed = [](std::u16string_view text) {
    std::size_t length = 0;
    ParseSystemTime(text, &length);
    return length;
  };
  EXPECT_EQ(consumed(u"2024-05-01"), 10u);
  EXPECT_EQ(consumed(u"2024-05-01 UTC"), 11u);
  EXPECT_EQ(consumed(u" 2024-05-01 10:20+1"), 17u);
  EXPECT_EQ(consumed(u"2024-05-01 10:20:30.123 UTC"), 23u);
}

constexpr char kBadZoneHour[] = "5/6 Invalid hour part in date/time string. Expected a number from 0 to 14.";
constexpr char kBadZoneMinute[] = "5/7 Invalid minute part in date/time string. Expected a number from 0 to 59.";

constexpr ParseRow kZones[] = {
    {u"UTC+02:00", "-120"},
    {u"  gMt - 03:30 ", "210"},
    {u"+01:30", "-30"},  // not -90
    {u"14:59", "-781"},
    {u"-0:5", "5"},
    {u"UTC", kBadZoneHour},
    {u"", kBadZoneHour},
    {u"+15:00", kBadZoneHour},
    {u"+002:00", kBadZoneHour},
    {u"CET+02:00", kBadZoneHour},
    {u"UTCGMT+02:00", kBadZoneHour},
    {u"+02", "5/10 ':' expected."},
    {u"+02:60", kBadZoneMinute},
    {u"+02:000", kBadZoneMinute},
    {u"+02:00 x", "5/12 End of date/time string expected."},
};

TEST(DateTimeParser, GivesTheBiasOrTheStatedError) {
  for (const ParseRow& row : kZones) {
    EXPECT_EQ(Outcome([&row] { return std::to_string(ParseZoneBias(row.text)); }), row.outcome)
        << testing::PrintToString(std::u16string(row.text));
  }
}

TEST(DateTimeParser, ReadsATimeOfAZone) {
  const ParseRow rows[] = {
      {u"2024-05-01 10:20:30.123 UTC+02:00", "2024/05/01 10:20:30,123 GMT+02:00"},
      {u"2024-05-01 -03:30", "2024/05/01 00:00:00,000 GMT-03:30"},
      {u"2024-05-01T10:20+01:30", "2024/05/01 10:20:00,000 GMT+00:30"},
      {u"2024-05-01 10:20:30", kBadZoneHour},
      {u"2024-05-01", kBadZoneHour},
      {u"1601-01-01 +01:00",
       "5/13 SetUTCMilliseconds(): Internal milliseconds underflow. A year below 1601 is not supported."},
  };
  for (const ParseRow& row : rows) {
    EXPECT_EQ(Outcome([&row] { return BiasToStr(ParseDateTime(row.text)); }), row.outcome);
  }
  EXPECT_EQ(ParseDateTime(u"2024-05-01 10:20:30.123 UTC+02:00").GetUTCMilliseconds(), 13359025230123u);
}

}  // namespace
}  // namespace Kestrel
