/// Reads dates and times from text: "2024-05-01", "2024/05/01 10:20", "2024-05-01T10:20:30.123", and behind them a zone
/// part such as "UTC+02:00". Every error is an EKestrelDateTime with its number and message.
#pragma once

#include <cstddef>
#include <string_view>

#include "time/date_time.h"

namespace Kestrel {

/// Reads a date and time. Without consumed, nothing may stand behind it. With consumed, what stands behind it is left
/// unread, and the number of units that were read is stored. Parts that are missing are 0.
platform::SystemTime ParseSystemTime(std::u16string_view text, std::size_t* consumed = nullptr);
/// Bias in minutes of a text that is a zone part as a whole.
std::int16_t ParseZoneBias(std::u16string_view text);
/// A date and time with the bias of its zone part, which is mandatory. Rounded to milliseconds.
TKestrelDateTime ParseDateTime(std::u16string_view text);
/// A date and time without a zone part, with the bias that the machine's zone has then. Rounded to milliseconds. Throws
/// SystemException with the context "GetTimeZoneInformation" where the zone is unknown.
TKestrelDateTime ParseLocalDateTime(std::u16string_view text);

}  // namespace Kestrel
