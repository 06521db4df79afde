#include "platform/linux/time_zone.h"

#include <string_view>

#include "platform/calendar.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

constexpr std::time_t kDay = 86400;
constexpr std::int64_t kDaysFrom1601To1970 = 134774;

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

long OffsetAt(std::time_t time) {
  return LocalTime(time).tm_gmtoff;
}

std::time_t BeginOfYear(int year) {
  return (DaysFromCivil({year, 1, 1}) - kDaysFrom1601To1970) * kDay;
}

/// The first second with the offset that end has. Begin has another one, and one transition lies between.
std::time_t Transition(std::time_t begin, std::time_t end) {
  const long after = OffsetAt(end);
  while (end - begin > 1) {
    const std::time_t middle = begin + (end - begin) / 2;
    (OffsetAt(middle) == after ? end : begin) = middle;
  }
  return end;
}

/// The relative form of a transition, in the local time that was in force before it. The last such weekday of a month
/// counts as the last: no zone in use means the fourth one where both are the same.
SystemTime RelativeDate(std::time_t transition) {
  const std::time_t local = transition + OffsetAt(transition - 1);
  std::tm date{};
  gmtime_r(&local, &date);
  const auto month = static_cast<unsigned>(date.tm_mon + 1), day = static_cast<unsigned>(date.tm_mday);
  const bool last = day + 7 > DaysOfMonth(date.tm_year + 1900, month);
  return {.year = 0,
          .month = static_cast<std::uint16_t>(month),
          .dayOfWeek = static_cast<std::uint16_t>(date.tm_wday),
          .day = static_cast<std::uint16_t>(last ? 5 : (day - 1) / 7 + 1),
          .hour = static_cast<std::uint16_t>(date.tm_hour),
          .minute = static_cast<std::uint16_t>(date.tm_min),
          .second = static_cast<std::uint16_t>(date.tm_sec),
          .milliseconds = 0};
}

template <std::size_t N>
void SetName(char16_t (&target)[N], std::time_t time) {
  const std::u16string name = WideText(LocalTime(time).tm_zone);
  CopyWithNul(std::u16string_view(name).substr(0, N - 1), target, N);
}

}  // namespace

TimeZoneYear TimeZoneYearOf(std::time_t now) {
  std::tm utc{};
  gmtime_r(&now, &utc);
  TimeZoneYear year{};
  year.begin = BeginOfYear(utc.tm_year + 1900);
  year.end = BeginOfYear(utc.tm_year + 1901);

  // Shorter than any zone keeps its daylight time.
  constexpr std::time_t kStep = 8 * kDay;
  int transitions = 0;
  for (std::time_t time = year.begin; time + kStep < year.end; time += kStep) {
    const long change = OffsetAt(time + kStep) - OffsetAt(time);
    if (change == 0) continue;
    ++transitions;
    (change > 0 ? year.toDaylight : year.toStandard) = Transition(time, time + kStep);
  }

  const bool hasRules = transitions == 2 && year.toDaylight != 0 && year.toStandard != 0;
  if (!hasRules) year.toDaylight = year.toStandard = 0;
  const std::time_t standard = hasRules ? year.toStandard : now;
  const std::time_t daylight = hasRules ? year.toDaylight : now;
  year.rules.bias = static_cast<std::int32_t>(-OffsetAt(standard) / 60);
  SetName(year.rules.standardName, standard);
  SetName(year.rules.daylightName, daylight);
  if (hasRules) {
    year.rules.daylightBias = static_cast<std::int32_t>(-OffsetAt(daylight) / 60) - year.rules.bias;
    year.rules.standardDate = RelativeDate(year.toStandard);
    year.rules.daylightDate = RelativeDate(year.toDaylight);
  }
  return year;
}

}  // namespace platform
