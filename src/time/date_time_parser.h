/// Reads dates and times from text: "2024-05-01", "2024/05/01 10:20", "2024-05-01T10:20:30.123", and behind them a zone
/// part such as "UTC+02:00". Every error is an EKestrelDateTime with its number and message.
#pragma once

#include <cstddef>
#include <string_view>

#include "time/date_time.h"

namespace Kestrel {

/// Reads the whole text, or, where consumed is given, as much of it as is a date and time, and stores the length of
/// that in units. Missing parts are 0.
platform::SystemTime ParseSystemTime(std::u16string_view text, std::size_t* consumed = nullptr);
/// Bias in minutes of a zone part, which must be the whole text.
std::int16_t ParseZoneBias(std::u16string_view text);
/// A date and time, and a zone part, which is mandatory. Rounded to milliseconds.
TKestrelDateTime ParseDateTime(std::u16string_view text);

}  // namespace Kestrel
