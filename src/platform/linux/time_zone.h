/// The rules of the process's time zone in one year.
#pragma once

#include <ctime>

#include "platform/clock.h"

namespace platform {

struct TimeZoneYear {
  std::time_t begin;  ///< of the year, UTC
  std::time_t end;
  std::time_t toDaylight;  ///< transitions; both 0 where the year does not have one of each
  std::time_t toStandard;
  TimeZoneInformation rules;
};

/// As the C library knows them: found by looking where its local time leaps.
TimeZoneYear TimeZoneYearOf(std::time_t now);

}  // namespace platform
