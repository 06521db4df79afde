/// Clocks, conversion between calendar and file times, the time zone, and dates and times as text in the user's locale.
///
/// Functions that return bool fail with false and the thread's last error set. Thread-safe.
#pragma once

#include <cstdint>

namespace platform {

/// 100-nanosecond intervals since 1601-01-01 00:00 UTC, low half first.
struct FileTime {
  std::uint32_t low;
  std::uint32_t high;
};
static_assert(sizeof(FileTime) == 8);

struct SystemTime {
  std::uint16_t year;       ///< 1601 to 30827
  std::uint16_t month;      ///< 1 to 12
  std::uint16_t dayOfWeek;  ///< 0 is Sunday; not read by the conversion to FileTime
  std::uint16_t day;
  std::uint16_t hour;
  std::uint16_t minute;
  std::uint16_t second;
  std::uint16_t milliseconds;
};
static_assert(sizeof(SystemTime) == 16);

/// A transition date with year 0 is relative: its dayOfWeek is a weekday, and its day says which one of the month, 1 to
/// 4, or 5 for the last. With another year it is an absolute date.
struct TimeZoneInformation {
  std::int32_t bias;  ///< minutes; local time = UTC - bias
  char16_t standardName[32];
  SystemTime standardDate;    ///< month 0: the zone has no transitions
  std::int32_t standardBias;  ///< minutes, added to bias in standard time
  char16_t daylightName[32];
  SystemTime daylightDate;
  std::int32_t daylightBias;  ///< minutes, added to bias in daylight time
};
static_assert(sizeof(TimeZoneInformation) == 172);

/// Flags of GetDateFormatW and GetTimeFormatW; values of the Windows API.
inline constexpr std::uint32_t DATE_SHORTDATE = 0x1;
inline constexpr std::uint32_t DATE_LONGDATE = 0x2;
inline constexpr std::uint32_t TIME_NOSECONDS = 0x2;

/// A monotonic clock, for measuring; its origin is unspecified.
bool QueryPerformanceFrequency(std::int64_t* ticksPerSecond);
bool QueryPerformanceCounter(std::int64_t* ticks);

void GetSystemTimeAsFileTime(FileTime* time);
void GetLocalTime(SystemTime* time);
/// ERROR_INVALID_PARAMETER for a value outside the calendar, such as a FileTime above 0x7FFFFFFFFFFFFFFF.
bool SystemTimeToFileTime(const SystemTime& systemTime, FileTime* fileTime);
bool FileTimeToSystemTime(const FileTime& fileTime, SystemTime* systemTime);

/// The zone's rules, and what is in force: 0 a zone without rules, 1 standard time, 2 daylight time, 0xFFFFFFFF
/// failure. The rules have room for two transitions a year. Linux gives no rules for a year with another number of
/// transitions; bias is then the one in force.
std::uint32_t GetTimeZoneInformation(TimeZoneInformation* information);

/// Texts in the user's default locale. picture, where it is not null, takes the place of flags; Linux knows only
/// u"ddd", the abbreviated day of the week. Each returns the units written with the NUL, or needed where units is 0; 0
/// on failure, with ERROR_INSUFFICIENT_BUFFER or ERROR_INVALID_PARAMETER.
int GetDateFormatW(std::uint32_t flags, const SystemTime& time, const char16_t* picture, char16_t* text, int units);
int GetTimeFormatW(std::uint32_t flags, const SystemTime& time, char16_t* text, int units);

}  // namespace platform
