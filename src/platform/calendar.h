/// The proleptic Gregorian calendar: dates, and days counted from 1601-01-01, which was a Monday.
#pragma once

#include <cstdint>

namespace platform {

/// The years that SystemTime and FileTime have in common.
inline constexpr std::uint16_t kFirstYear = 1601, kLastYear = 30827;

struct CivilDate {
  std::int64_t year;
  unsigned month;  ///< 1 to 12
  unsigned day;    ///< 1 to 31
};

constexpr bool IsLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Requires a month from 1 to 12.
constexpr unsigned DaysOfMonth(std::int64_t year, unsigned month) {
  constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

/// Requires a month from 1 to 12 and a year from 1 on. This function and CivilFromDays count years from March, so that
/// the leap day is the last day of its year. From March and from August on, five months have 153 days.
constexpr std::int64_t DaysFromCivil(const CivilDate& date) {
  const std::int64_t year = date.year - (date.month < 3 ? 1 : 0);
  const unsigned monthFromMarch = (date.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
  constexpr std::int64_t kMarchOfYear0 = 584694;  // days from 0000-03-01 to 1601-01-01
  return year * 365 + year / 4 - year / 100 + year / 400 + dayOfYear - kMarchOfYear0;
}

/// Requires a number that is not negative.
constexpr CivilDate CivilFromDays(std::int64_t daysFrom1601) {
  constexpr std::int64_t kMarchOfYear0 = 584694;
  constexpr std::uint64_t kDaysOf400Years = 146097;
  const auto days = static_cast<std::uint64_t>(daysFrom1601 + kMarchOfYear0);
  const auto cycle = static_cast<std::int64_t>(days / kDaysOf400Years);
  const auto day = static_cast<std::uint32_t>(days % kDaysOf400Years);
  // Leap days are taken out, so that every year has 365 days: one in 4 years, none in 100, one in 400.
  const std::uint32_t yearOfCycle = (day - day / 1460 + day / 36524 - day / 146096) / 365;
  const std::uint32_t dayOfYear = day - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
  const std::uint32_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::uint32_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  return {cycle * 400 + yearOfCycle + (month < 3 ? 1 : 0), month, dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

inline constexpr std::int64_t kDaysFrom1601To1970 = DaysFromCivil({1970, 1, 1});
static_assert(DaysFromCivil({1601, 1, 1}) == 0 && kDaysFrom1601To1970 == 134774);

/// 0 is Sunday. Requires a number that is not negative.
constexpr unsigned DayOfWeek(std::int64_t daysFrom1601) {
  return static_cast<unsigned>(static_cast<std::uint64_t>(daysFrom1601 + 1) % 7);
}

}  // namespace platform
