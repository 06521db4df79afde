/// The time zone of the process: TZ, or the system's setting.
#pragma once

#include <cstdint>
#include <ctime>
#include <limits>
#include <mutex>

#include "platform/clock.h"

namespace platform {

/// What GetTimeZoneInformation tells at some time.
struct TimeZoneAnswer {
  std::uint32_t state;  ///< what it returns: 0 no rules, 1 standard time, 2 daylight time
  TimeZoneInformation rules;
};

/// Asks the C library for the transitions of the year of UTC that contains now. Two that cancel each other out are the
/// rules. TimeZoneInformation has no form for any others, such as a single one or four: then there are no rules, and
/// the bias is the one in force.
TimeZoneAnswer TimeZoneAt(std::time_t now);

/// The parts of a time in the zone that is set now. localtime_r alone may use one that was set before.
std::tm LocalParts(std::time_t time);

/// Keeps the answer for the rest of its second, because it takes many calls of the C library; no longer, because the
/// system's setting may change. A TZ that is longer than the room is not kept. Thread-safe.
class TimeZoneCache {
 public:
  TimeZoneAnswer Get(std::time_t now);

 private:
  static constexpr std::time_t kNever = std::numeric_limits<std::time_t>::min();

  std::mutex mutex_;
  std::time_t second_ = kNever;
  char zone_[64] = {};
  TimeZoneAnswer answer_{};
};

}  // namespace platform
