#include "base/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <utility>

#include "base/hex_digits.h"

namespace Kestrel {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsHexDigit(char c) {
  return HexDigitValue(c) >= 0;
}

void SkipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Removes a sign if there is one; true for a minus.
bool TakeSign(std::string_view& text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool negative = text.front() == '-';
  text.remove_prefix(1);
  return negative;
}

/// Removes blanks, a sign and digits. Saturates; empty where there is no digit.
std::optional<std::int64_t> TakeInteger(std::string_view& text) {
  using Limits = std::numeric_limits<std::int64_t>;
  SkipBlanks(text);
  const bool negative = TakeSign(text);
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0) return std::nullopt;
  std::uint64_t magnitude = 0;
  const auto read = std::from_chars(text.data(), text.data() + digits, magnitude);
  text.remove_prefix(digits);
  const std::uint64_t largest = static_cast<std::uint64_t>(Limits::max()) + (negative ? 1 : 0);
  if (read.ec != std::errc() || magnitude > largest) magnitude = largest;
  return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

/// Why a number is out of range: true for overflow, false for underflow. `number` has no sign and ends with its last
/// digit. Every number out of range is far from 1, so the place of its first digit other than 0 decides.
bool IsTooLarge(std::string_view number, bool hex) {
  std::int64_t place = 0;
  bool significant = false;
  bool fraction = false;
  const std::size_t end = std::min(number.find_first_of(hex ? "pP" : "eE"), number.size());
  for (const char c : number.substr(0, end)) {
    significant = significant || (c != '0' && c != '.');
    if (c == '.') fraction = true;
    if (!fraction && significant) ++place;
    if (fraction && !significant && c == '0') --place;
  }
  const std::int64_t exponent = end < number.size() ? ParseInt32(number.substr(end + 1)) : 0;
  return place * (hex ? 4 : 1) + exponent > 0;
}

/// A number as decimal digits without trailing zeros, and the decimal exponent of the first digit.
struct Decimal {
  std::string digits;
  int exponent;
};

Decimal ToDecimal(double magnitude, int digits) {
  std::array<char, 32> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::scientific, digits - 1).ptr;
  char* const mark = std::find(text.data(), end, 'e');
  Decimal decimal{std::string(text.data(), mark), 0};
  std::erase(decimal.digits, '.');
  const char* const exponent = mark + (mark[1] == '+' ? 2 : 1);
  std::from_chars(exponent, end, decimal.exponent);
  decimal.digits.resize(std::max<std::size_t>(decimal.digits.find_last_not_of('0') + 1, 1));
  return decimal;
}

std::string FixedText(Decimal decimal) {
  if (decimal.exponent < 0) return "0." + decimal.digits;
  const auto point = static_cast<std::size_t>(decimal.exponent) + 1;
  if (decimal.digits.size() < point) decimal.digits.resize(point, '0');
  return decimal.digits.insert(point, 1, '.');
}

std::string ExponentText(Decimal decimal) {
  const std::string exponent = std::to_string(std::abs(decimal.exponent));
  decimal.digits.insert(1, 1, '.');
  return decimal.digits + (decimal.exponent < 0 ? "e-" : "e+") +
         std::string(exponent.size() < 3 ? 3 - exponent.size() : 0, '0') + exponent;
}

}  // namespace

std::string GeneralText(double number, int digits) {
  const bool negative = std::signbit(number);
  if (std::isnan(number)) return negative ? "-nan(ind)" : "nan";
  const std::string sign = negative ? "-" : "";
  if (std::isinf(number)) return sign + "inf";
  Decimal decimal = ToDecimal(std::fabs(number), digits);
  const bool fixed = number == 0 || (decimal.exponent >= -1 && decimal.exponent < digits);
  return sign + (fixed ? FixedText(std::move(decimal)) : ExponentText(std::move(decimal)));
}

std::int32_t ParseInt32(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(ParseInt64(text), Limits::min(), Limits::max()));
}

std::int64_t ParseInt64(std::string_view text) {
  return TakeInteger(text).value_or(0);
}

double ParseDouble(std::string_view text) {
  SkipBlanks(text);
  const bool negative = TakeSign(text);
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) return 0;
  const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
                   (IsHexDigit(text[2]) || (text[2] == '.' && text.size() > 3 && IsHexDigit(text[3])));
  if (hex) {
    text.remove_prefix(2);
    // std::from_chars takes "p+-4" for an exponent.
    const std::size_t mark = text.find_first_of("pP");
    if (mark != text.npos && text.substr(mark + 1).starts_with("+-")) text = text.substr(0, mark);
  }
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto read =
      std::from_chars(text.data(), end, number, hex ? std::chars_format::hex : std::chars_format::general);
  if (read.ec == std::errc::invalid_argument) return 0;
  if (read.ec == std::errc::result_out_of_range) {
    const auto length = static_cast<std::size_t>(read.ptr - text.data());
    number = IsTooLarge(text.substr(0, length), hex) ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return negative ? -number : number;
}

std::optional<bool> ExtractBool(std::string_view& text) {
  const std::optional<std::int64_t> number = TakeInteger(text);
  if (number != 0 && number != 1) return std::nullopt;
  return *number == 1;
}

/// A negative number is accepted and gives its low 32 bits, as with streams.
std::optional<std::uint32_t> ExtractUInt32(std::string_view& text) {
  const std::optional<std::int64_t> number = TakeInteger(text);
  constexpr std::int64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  if (!number || *number > kLargest || *number < -kLargest) return std::nullopt;
  return static_cast<std::uint32_t>(*number);
}

/// Unlike atof, a stream reads neither hexadecimal digits nor the names of infinities, and an exponent mark without
/// digits is an error.
std::optional<float> ExtractFloat(std::string_view& text) {
  SkipBlanks(text);
  const bool negative = TakeSign(text);
  if (text.empty() || (!IsDigit(text.front()) && text.front() != '.')) return std::nullopt;
  float number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  const auto length = static_cast<std::size_t>(read.ptr - text.data());
  const bool underflow = read.ec == std::errc::result_out_of_range && !IsTooLarge(text.substr(0, length), false);
  if (read.ec != std::errc() && !underflow) return std::nullopt;
  // An exponent without digits is an error; an "e" behind a whole one is only what follows the number.
  const bool hasExponent = text.substr(0, length).find_first_of("eE") != text.npos;
  if (!hasExponent && read.ptr != end && (*read.ptr == 'e' || *read.ptr == 'E')) return std::nullopt;
  text.remove_prefix(length);
  return negative ? -number : number;
}

std::string_view ExtractWord(std::string_view& text) {
  SkipBlanks(text);
  const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
  text.remove_prefix(word.size());
  return word;
}

}  // namespace Kestrel
