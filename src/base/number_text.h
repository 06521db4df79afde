/// Numbers from and to narrow text. The other side uses the functions of the Windows C runtime and C++ streams; these
/// here give the same, whatever the locale of the process.
///
/// Reading skips leading blanks and ignores what follows the number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrel {

/// _gcvt: the number with `digits` significant digits (1 to 17), without trailing zeros but always with its point:
/// "3.", "0.1", "-12.5". Where the decimal exponent is below -1 or not below `digits`, in exponent notation with at
/// least three digits: "1.5e+020". An infinity is "inf" or "-inf", a NaN "nan" or, with its sign set, "-nan(ind)".
std::string GeneralText(double number, int digits);

/// atoi and _atoi64. Without digits 0; a number out of range gives the limit of the type.
std::int32_t ParseInt32(std::string_view text);
std::int64_t ParseInt64(std::string_view text);
/// atof. Without a number 0; overflow gives an infinity, underflow 0.
double ParseDouble(std::string_view text);

/// Stream extraction: each removes what it has read from the front of `text`. Empty where there is no number or the
/// type cannot hold it, and how much is removed is then unspecified; underflow gives 0.
std::optional<bool> ExtractBool(std::string_view& text);  ///< only the numbers 0 and 1
std::optional<std::uint32_t> ExtractUInt32(std::string_view& text);
std::optional<float> ExtractFloat(std::string_view& text);
/// The text up to the next blank; empty at the end.
std::string_view ExtractWord(std::string_view& text);

}  // namespace Kestrel
