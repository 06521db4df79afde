#include "time/time_zone_transitions.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "base/exceptions.h"
#include "base/static_lock.h"
#include "platform/calendar.h"
#include "time/date_time.h"

namespace Kestrel {
namespace {

constexpr std::uint64_t kMillisecondsPerDay = 86400000;

[[noreturn]] void ThrowInvalidDate() {
  throw EKestrelDateTime(dteInvalidTransition, "Transition date of time zone is not valid.");
}

/// False for a date that is not in the calendar.
bool ToMilliseconds(const platform::SystemTime& time, std::int64_t& milliseconds) {
  platform::FileTime fileTime;
  if (!platform::SystemTimeToFileTime(time, &fileTime)) return false;
  milliseconds = static_cast<std::int64_t>(Ticks(fileTime) / kTicksPerMillisecond);
  return true;
}

/// The given weekday of the given week of the month, at the given time of day.
std::int64_t RelativeTransition(std::uint32_t year, const platform::SystemTime& rule) {
  constexpr std::uint16_t kLastWeek = 5;
  if (year < platform::kFirstYear || year > platform::kLastYear || rule.month < 1 || rule.month > 12 || rule.day < 1 ||
      rule.day > kLastWeek || rule.dayOfWeek > 6) {
    ThrowInvalidDate();
  }
  platform::SystemTime date = rule;
  date.year = static_cast<std::uint16_t>(year);
  const unsigned firstDayOfWeek = platform::DayOfWeek(platform::DaysFromCivil({year, rule.month, 1}));
  unsigned day = 1 + (rule.dayOfWeek + 7 - firstDayOfWeek) % 7 + (rule.day - 1u) * 7;
  if (day > platform::DaysOfMonth(year, rule.month)) day -= 7;  // the month has no fifth such day
  date.day = static_cast<std::uint16_t>(day);
  std::int64_t transition = 0;
  if (!ToMilliseconds(date, transition)) ThrowInvalidDate();
  return transition;
}

std::int64_t Transition(std::uint32_t year, const platform::SystemTime& rule) {
  if (rule.year == 0) return RelativeTransition(year, rule);
  if (rule.year != year) {
    throw EKestrelDateTime(dteInvalidTransition, "Transition date error in absolute format. Year not equal.");
  }
  std::int64_t transition = 0;
  if (!ToMilliseconds(rule, transition)) ThrowInvalidDate();
  return transition;
}

/// The last result, under its StaticLock. Callers ask for the current year of one zone nearly always.
struct Cache {
  std::uint32_t year = 0;  ///< 0: empty
  platform::TimeZoneInformation zone{};
  TimeZoneTransitions transitions;
};
constinit Cache cache;

}  // namespace

std::uint32_t YearFromMilliseconds(std::uint64_t milliseconds) {
  const auto days = static_cast<std::int64_t>(milliseconds / kMillisecondsPerDay);
  const std::int64_t year = platform::CivilFromDays(days).year;
  if (year > platform::kLastYear) {
    throw EKestrelDateTime(dteOutOfRange, "YearFromMilliseconds: Year/Century out of range.");
  }
  return static_cast<std::uint32_t>(year);
}

TimeZoneTransitions GetTimeZoneTransitions(std::uint32_t year, const platform::TimeZoneInformation& zone) {
  const std::lock_guard guard(StaticLock<Cache>());
  if (cache.year == 0 || cache.year != year || std::memcmp(&cache.zone, &zone, sizeof zone) != 0) {
    const TimeZoneTransitions transitions = {Transition(year, zone.standardDate), Transition(year, zone.daylightDate)};
    cache.year = year;
    cache.zone = zone;
    cache.transitions = transitions;
  }
  return cache.transitions;
}

std::int16_t BiasAt(std::uint64_t utcMilliseconds, const platform::TimeZoneInformation& zone) {
  if (zone.standardDate.month == 0) return static_cast<std::int16_t>(zone.bias);
  const std::int64_t standardBias = std::int64_t{zone.bias} + zone.standardBias;
  const std::int64_t daylightBias = std::int64_t{zone.bias} + zone.daylightBias;
  const auto utc = static_cast<std::int64_t>(utcMilliseconds);
  const std::int64_t standardTime = utc - standardBias * TKestrelDateTime::kMillisecondsPerMinute;
  const std::uint32_t year = YearFromMilliseconds(static_cast<std::uint64_t>(std::max<std::int64_t>(standardTime, 0)));
  const TimeZoneTransitions transitions = GetTimeZoneTransitions(year, zone);
  // Each transition is told in the local time that is in force before it.
  const std::int64_t toDaylight = transitions.toDaylight + standardBias * TKestrelDateTime::kMillisecondsPerMinute;
  const std::int64_t toStandard = transitions.toStandard + daylightBias * TKestrelDateTime::kMillisecondsPerMinute;
  // South of the equator daylight time spans the new year.
  const bool daylight =
      toDaylight < toStandard ? utc >= toDaylight && utc < toStandard : utc >= toDaylight || utc < toStandard;
  return static_cast<std::int16_t>(daylight ? daylightBias : standardBias);
}

std::int16_t BiasAtLocal(std::int64_t localMilliseconds, const platform::TimeZoneInformation& zone) {
  if (zone.standardDate.month == 0) return static_cast<std::int16_t>(zone.bias);
  const auto isInForce = [&](std::int32_t bias) {
    const std::int64_t utc = localMilliseconds + bias * TKestrelDateTime::kMillisecondsPerMinute;
    return BiasAt(static_cast<std::uint64_t>(std::max<std::int64_t>(utc, 0)), zone) == bias;
  };
  const std::int32_t standardBias = zone.bias + zone.standardBias;
  const std::int32_t daylightBias = zone.bias + zone.daylightBias;
  const bool isDaylight = isInForce(daylightBias) && !isInForce(standardBias);
  return static_cast<std::int16_t>(isDaylight ? daylightBias : standardBias);
}

platform::TimeZoneInformation GetMachineZone() {
  constexpr std::uint32_t kFailed = 0xFFFFFFFF;
  platform::TimeZoneInformation zone;
  if (platform::GetTimeZoneInformation(&zone) == kFailed) ThrowLastSystemError("GetTimeZoneInformation");
  return zone;
}

}  // namespace Kestrel
