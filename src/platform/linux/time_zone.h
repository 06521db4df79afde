/// The time zone of the process: TZ, or the system's setting.
#pragma once

#include <cstdint>
#include <ctime>
#include <mutex>

#include "platform/clock.h"

namespace platform {

/// A stretch of time without a transition, within one year of UTC.
struct TimeZonePeriod {
  std::time_t begin;
  std::time_t end;      ///< the first second that is not in it
  std::uint32_t state;  ///< what GetTimeZoneInformation returns: 0 no rules, 1 standard time, 2 daylight time
  TimeZoneInformation rules;
};

/// The period that contains now. The C library is asked for the transitions of that year. Two that cancel each other
/// out are the rules. TimeZoneInformation has no form for any others, such as a single one or four: then there are no
/// rules, and the bias is the period's own.
TimeZonePeriod TimeZonePeriodAt(std::time_t now);

/// The parts of a time in the zone that is set now. localtime_r alone may use one that was set before.
std::tm LocalParts(std::time_t time);

/// Keeps the last period together with the setting that it comes from, because a period takes many calls of the C
/// library. A setting that is longer than the room is not kept. Thread-safe.
class TimeZoneCache {
 public:
  TimeZonePeriod Get(std::time_t now);

 private:
  std::mutex mutex_;
  TimeZonePeriod period_{};
  char zone_[64] = {};
};

}  // namespace platform
