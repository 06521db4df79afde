#include "platform/clock.h"

#include "platform/windows/api.h"

namespace platform {
namespace {

static_assert(sizeof(FileTime) == sizeof(FILETIME) && sizeof(SystemTime) == sizeof(SYSTEMTIME) &&
              sizeof(TimeZoneInformation) == sizeof(TIME_ZONE_INFORMATION));

const SYSTEMTIME* System(const SystemTime& time) {
  return reinterpret_cast<const SYSTEMTIME*>(&time);
}

}  // namespace

bool QueryPerformanceFrequency(std::int64_t* ticksPerSecond) {
  return ::QueryPerformanceFrequency(reinterpret_cast<LARGE_INTEGER*>(ticksPerSecond)) != FALSE;
}

bool QueryPerformanceCounter(std::int64_t* ticks) {
  return ::QueryPerformanceCounter(reinterpret_cast<LARGE_INTEGER*>(ticks)) != FALSE;
}

void GetSystemTimeAsFileTime(FileTime* time) {
  ::GetSystemTimeAsFileTime(reinterpret_cast<FILETIME*>(time));
}

void GetLocalTime(SystemTime* time) {
  ::GetLocalTime(reinterpret_cast<SYSTEMTIME*>(time));
}

bool SystemTimeToFileTime(const SystemTime& systemTime, FileTime* fileTime) {
  return ::SystemTimeToFileTime(System(systemTime), reinterpret_cast<FILETIME*>(fileTime)) != FALSE;
}

bool FileTimeToSystemTime(const FileTime& fileTime, SystemTime* systemTime) {
  return ::FileTimeToSystemTime(reinterpret_cast<const FILETIME*>(&fileTime),
                                reinterpret_cast<SYSTEMTIME*>(systemTime)) != FALSE;
}

std::uint32_t GetTimeZoneInformation(TimeZoneInformation* information) {
  return ::GetTimeZoneInformation(reinterpret_cast<TIME_ZONE_INFORMATION*>(information));
}

int GetDateFormatW(std::uint32_t flags, const SystemTime& time, const char16_t* picture, char16_t* text, int units) {
  return ::GetDateFormatW(LOCALE_USER_DEFAULT, picture ? 0 : flags, System(time), Wide(picture), Wide(text), units);
}

int GetTimeFormatW(std::uint32_t flags, const SystemTime& time, char16_t* text, int units) {
  return ::GetTimeFormatW(LOCALE_USER_DEFAULT, flags, System(time), nullptr, Wide(text), units);
}

}  // namespace platform
