/// Hexadecimal digits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kestrel {

inline constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";
inline constexpr std::string_view kLowerHexDigits = "0123456789abcdef";

/// By character, upper or lower case; negative for one that is no digit.
inline constexpr std::array<std::int8_t, 256> kHexDigitValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < 16; ++i)
    for (const char digit : {kUpperHexDigits[i], kLowerHexDigits[i]})
      values[static_cast<std::uint8_t>(digit)] = static_cast<std::int8_t>(i);
  return values;
}();

/// 0 to 15; negative for a character that is no digit.
constexpr int HexDigitValue(char character) {
  return kHexDigitValues[static_cast<std::uint8_t>(character)];
}

}  // namespace Kestrel
