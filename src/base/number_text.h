/// Numbers from and to narrow text as the C runtime and the string streams of the other side read and write them,
/// whatever the locale of the process.
///
/// Reading forms skip leading blanks and ignore what stands behind the number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrel {

/// The number in `digits` significant digits (1 to 17), without trailing zeros but always with its point: "3.", "0.1",
/// "-12.5". A decimal exponent below -1, or of at least the digit count, gives "1.5e+020": three exponent digits or
/// more. Not a number: "inf", "-inf", "nan", and for a negative one, which is what the processor makes, "-nan(ind)".
std::string GeneralText(double number, int digits);

/// atoi and its 64-bit form: no digits give 0, numbers out of range the limit.
std::int32_t ParseInt32(std::string_view text);
std::int64_t ParseInt64(std::string_view text);
/// atof: no number gives 0; out of range gives an infinity or 0.
double ParseDouble(std::string_view text);

/// The extractions of an input stream: each takes what it reads from the front of text.
/// No number, or one that the type cannot hold, gives nothing.
std::optional<bool> ExtractBool(std::string_view& text);  ///< only the numbers 0 and 1
std::optional<std::uint32_t> ExtractUInt32(std::string_view& text);
std::optional<float> ExtractFloat(std::string_view& text);
/// Everything up to the next blank; may be empty.
std::string_view ExtractWord(std::string_view& text);

}  // namespace Kestrel
