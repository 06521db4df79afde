#include "time/date_time.h"

#include <algorithm>

#include "base/exceptions.h"
#include "platform/debugger.h"
#include "time/time_zone_transitions.h"

namespace Kestrel {
namespace {

constexpr std::int64_t kMax = TKestrelDateTime::kMaxMilliseconds;

platform::FileTime FromTicks(std::uint64_t ticks) {
  return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
}

}  // namespace

void TKestrelDateTime::SetUTCMilliseconds(int kind, std::int64_t value, std::int16_t biasMinutes) {
  // Clamped so that the sum cannot overflow. A value that far outside stays outside with any bias.
  std::int64_t utc = std::clamp(value, -2 * kMax, 2 * kMax);
  if (kind != kUtc) utc += biasMinutes * kMillisecondsPerMinute;
  if (utc < 0) {
    throw EKestrelDateTime(dteOutOfRange,
                           "SetUTCMilliseconds(): Internal milliseconds underflow. "
                           "A year below 1601 is not supported.");
  }
  if (utc > kMax) {
    throw EKestrelDateTime(dteOutOfRange, "SetUTCMilliseconds(): Internal milliseconds overflow.");
  }
  word_ = static_cast<std::uint64_t>(utc) | std::uint64_t{static_cast<std::uint16_t>(biasMinutes)} << 48;
}

platform::SystemTime TKestrelDateTime::ToLocalSystemTime() const {
  const std::int64_t local =
      static_cast<std::int64_t>(GetUTCMilliseconds()) - GetBiasMinutes() * kMillisecondsPerMinute;
  // A time before 1601 is negative; as a file time it has the highest bit set, which the system refuses.
  return FileTimeToSystemTime(FromTicks(static_cast<std::uint64_t>(local) * kTicksPerMillisecond));
}

TKestrelDateTime TKestrelDateTime::Now() {
  platform::FileTime time;
  platform::GetSystemTimeAsFileTime(&time);
  const std::uint64_t utc = Ticks(time) / kTicksPerMillisecond;
  TKestrelDateTime now;
  // The bias is computed from the zone's rules, because the bias that the system calls current may belong to a moment
  // after the clock was read.
  now.SetUTCMilliseconds(kUtc, static_cast<std::int64_t>(utc), BiasAt(utc, GetMachineZone()));
  return now;
}

platform::FileTime SystemTimeToFileTime(const platform::SystemTime& systemTime) {
  platform::FileTime fileTime;
  if (!platform::SystemTimeToFileTime(systemTime, &fileTime)) ThrowLastSystemError("Kestrel::SystemTimeToFileTime");
  return fileTime;
}

platform::SystemTime FileTimeToSystemTime(const platform::FileTime& fileTime) {
  platform::SystemTime systemTime;
  if (!platform::FileTimeToSystemTime(fileTime, &systemTime)) ThrowLastSystemError("Kestrel::FileTimeToSystemTime");
  return systemTime;
}

std::int64_t SystemTimeToMilliseconds(const platform::SystemTime& systemTime) {
  platform::FileTime fileTime;
  if (!platform::SystemTimeToFileTime(systemTime, &fileTime)) ThrowLastSystemError("Kestrel::SystemTimeToMilliseconds");
  return static_cast<std::int64_t>(Ticks(fileTime) / kTicksPerMillisecond);
}

std::int64_t GetKestrelTimerFrequency() {
  std::int64_t frequency = 0;
  if (!platform::QueryPerformanceFrequency(&frequency)) ThrowLastSystemError("Kestrel::GetKestrelTimerFrequency");
  if (frequency < 1) platform::OutputDebugStringA("Result.QuadPart > 0");
  return frequency;
}

}  // namespace Kestrel
