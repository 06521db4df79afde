#include "platform/linux/time_zone.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/calendar.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

constexpr std::time_t kDay = 86400;
/// What the C library takes where TZ is not set. An empty TZ means UTC.
constexpr char kSystemZone[] = "/etc/localtime";
constexpr std::uint32_t kUnknown = 0, kStandard = 1, kDaylight = 2;

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

/// Seconds east of Greenwich.
long OffsetAt(std::time_t time) {
  return LocalTime(time).tm_gmtoff;
}

/// Minutes; local time = UTC - bias.
std::int32_t BiasAt(std::time_t time) {
  return static_cast<std::int32_t>(-OffsetAt(time) / 60);
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

/// The first seconds of new offsets, from begin on and before end.
std::vector<std::time_t> Transitions(std::time_t begin, std::time_t end) {
  constexpr std::time_t kStep = 8 * kDay;  // shorter than any zone keeps an offset
  std::vector<std::time_t> transitions;
  for (std::time_t from = begin - 1, to; from < end - 1; from = to) {
    to = std::min(from + kStep, end - 1);
    if (OffsetAt(from) != OffsetAt(to)) transitions.push_back(Transition(from, to));
  }
  return transitions;
}

/// The relative form of a transition, in the local time that was in force before it. A fourth weekday that is also the
/// last of its month counts as the last, because no zone in use has a rule for the fourth.
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

TimeZoneAnswer TimeZoneAt(std::time_t now) {
  std::tm utc{};
  gmtime_r(&now, &utc);
  const std::vector<std::time_t> transitions =
      Transitions(BeginOfYear(utc.tm_year + 1900), BeginOfYear(utc.tm_year + 1901));
  TimeZoneAnswer answer{.state = kUnknown, .rules = {}};

  const bool hasRules = transitions.size() == 2 && OffsetAt(transitions[0] - 1) == OffsetAt(transitions[1]);
  if (!hasRules) {
    answer.rules.bias = BiasAt(now);
    SetName(answer.rules.standardName, now);
    SetName(answer.rules.daylightName, now);
    return answer;
  }
  const bool northern = OffsetAt(transitions[0]) > OffsetAt(transitions[1]);
  const std::time_t daylight = transitions[northern ? 0 : 1], standard = transitions[northern ? 1 : 0];
  answer.state = OffsetAt(now) == OffsetAt(daylight) ? kDaylight : kStandard;
  answer.rules.bias = BiasAt(standard);
  answer.rules.daylightBias = BiasAt(daylight) - answer.rules.bias;
  answer.rules.standardDate = RelativeDate(standard);
  answer.rules.daylightDate = RelativeDate(daylight);
  SetName(answer.rules.standardName, standard);
  SetName(answer.rules.daylightName, daylight);
  return answer;
}

std::tm LocalParts(std::time_t time) {
  tzset();
  return LocalTime(time);
}

TimeZoneAnswer TimeZoneCache::Get(std::time_t now) {
  const char* const setting = std::getenv("TZ");
  const std::string_view zone = setting ? setting : kSystemZone;
  const std::lock_guard guard(mutex_);
  if (now != second_ || zone != zone_) {
    tzset();
    answer_ = TimeZoneAt(now);
    const bool fits = zone.size() < sizeof zone_;
    second_ = fits ? now : kNever;
    if (fits) zone_[zone.copy(zone_, zone.size())] = '\0';
  }
  return answer_;
}

}  // namespace platform
