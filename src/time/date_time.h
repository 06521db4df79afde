/// Points in time: UTC milliseconds since 1601 with the time-zone bias in force where the value was taken.
///
/// Errors: EKestrelDateTime with a number of DateTimeError for values out of range and invalid rules, SystemException
/// where a conversion of the system fails.
/// Threads: Values are plain words and need no lock; the functions may be called on any thread.
#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace Kestrel {

/// One 64-bit word: bits 0 to 47 milliseconds since 1601-01-01 00:00 UTC, bits 48 to 63 the bias in minutes, signed
/// (local time = UTC - bias). The word is the wire form, little-endian.
class TKestrelDateTime {
 public:
  static constexpr std::uint64_t kMaxMilliseconds = 0xFFFFFFFFFFFF;
  static constexpr std::int64_t kMillisecondsPerMinute = 60000;
  /// Kinds of SetUTCMilliseconds. Every number other than kUtc means local time.
  static constexpr int kLocal = 0;
  static constexpr int kUtc = 1;

  TKestrelDateTime() = default;
  explicit TKestrelDateTime(std::uint64_t word) : word_(word) {}

  /// Stores value, which is UTC for kUtc and else local time, to which the bias is added. Throws number 13 where the
  /// result lies before 1601 or above kMaxMilliseconds; the object is untouched then.
  void SetUTCMilliseconds(int kind, std::int64_t value, std::int16_t biasMinutes);

  std::uint64_t GetWord() const { return word_; }
  std::uint64_t GetUTCMilliseconds() const { return word_ & kMaxMilliseconds; }
  std::int16_t GetBiasMinutes() const { return static_cast<std::int16_t>(word_ >> 48); }
  /// The date and time in the value's own bias. Throws SystemException where the result lies before 1601.
  platform::SystemTime ToLocalSystemTime() const;

  /// The current time with the machine's bias. Throws as GetMachineZone and BiasAt do (time_zone_transitions.h).
  static TKestrelDateTime Now();

  friend bool operator==(TKestrelDateTime, TKestrelDateTime) = default;

 private:
  std::uint64_t word_ = 0;
};
static_assert(sizeof(TKestrelDateTime) == 8);

inline constexpr std::uint64_t kTicksPerMillisecond = 10000;
/// 100-nanosecond intervals since 1601.
inline std::uint64_t Ticks(const platform::FileTime& time) {
  return std::uint64_t{time.high} << 32 | time.low;
}

/// Checked forms of the system's conversions; each throws SystemException with its own qualified name as context.
platform::FileTime SystemTimeToFileTime(const platform::SystemTime& systemTime);
platform::SystemTime FileTimeToSystemTime(const platform::FileTime& fileTime);
/// Milliseconds since 1601, truncated.
std::int64_t SystemTimeToMilliseconds(const platform::SystemTime& systemTime);

/// Ticks per second of the performance counter, for the check at load. Throws SystemException with the context
/// "Kestrel::GetKestrelTimerFrequency"; below 1 it sends "Result.QuadPart > 0" to the debugger.
std::int64_t GetKestrelTimerFrequency();

}  // namespace Kestrel
