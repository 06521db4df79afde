/// Daylight-saving transition points of a year.
#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace Kestrel {

/// Year of a point in time, milliseconds since 1601. Throws EKestrelDateTime number 13 above the year 30827.
std::uint32_t YearFromMilliseconds(std::uint64_t milliseconds);

/// Local milliseconds since 1601 of both transitions of a year.
struct TimeZoneTransitions {
  std::int64_t toStandard = 0;
  std::int64_t toDaylight = 0;
};

/// The transitions of a year. Throws EKestrelDateTime number 1 for a transition date that is neither a valid relative
/// date nor an absolute one of that year. Thread-safe: the last result is kept in a process-wide cache under a lock.
TimeZoneTransitions GetTimeZoneTransitions(std::uint32_t year, const platform::TimeZoneInformation& zone);

/// Bias in minutes that is in force at a point in UTC milliseconds, by the zone's rules. Throws as the functions above.
std::int16_t BiasAt(std::uint64_t utcMilliseconds, const platform::TimeZoneInformation& zone);
/// The same at a point in local milliseconds. A time of the hour that the change to standard time repeats, or that the
/// change to daylight time leaves out, counts as standard time.
std::int16_t BiasAtLocal(std::int64_t localMilliseconds, const platform::TimeZoneInformation& zone);

/// The machine's zone. Throws SystemException with the context "GetTimeZoneInformation".
platform::TimeZoneInformation GetMachineZone();

}  // namespace Kestrel
