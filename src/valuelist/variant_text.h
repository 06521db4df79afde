/// The text forms of the held types: TextOf writes one, ParseText reads one.
///
///     tag         text                                         read by
///     0           "1" or "0"                                   stream extraction; only the numbers 0 and 1
///     1..5 7 19   decimal, but of vtSChar the byte itself      atoi, low bits
///     6 8 20      decimal                                      the 64-bit atoi, low bits
///     9 10        6 or 15 significant digits, see GeneralText  stream extraction; atof
///     11 12       itself; in UTF-8 up to the first NUL         itself; from UTF-8
///     13          "binarydata <length> <base64>"               the same; the base64 ends at the first blank
///     14          "blobptr <size><address>"                    "blobptr <size> <address>"
///     15 16       2024/05/01 10:20:30,123; and the zone        the date parsers
///     17          "<nullref/>", or the object's own text       never
///     18          6f9619ff-8b86-d011-b42d-00cf4fc964ff         the guid parser
///
/// Lengths and sizes in texts are their low 32 bits. Neither the line ends of tag 13 nor the missing blank of tag 14
/// can be read back; that is the form of the other side.
///
/// Errors  ParseText leaves the value as it was. Tag 0 and 9 throw StringConversionException, 13, 14 and 17
///         VariantStringToValueConversionException, 18 GuidConversionException; dates and conversions their own.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/guid.h"
#include "base/number_text.h"
#include "platform/clock.h"
#include "time/date_time.h"
#include "valuelist/variant_payloads.h"
#include "valuelist/variant_types.h"

namespace Kestrel {

static_assert(std::is_signed_v<char>, "vtChar is a signed number");

/// Significant digits of the floating types.
inline constexpr int kFloatDigits = 6;
inline constexpr int kDoubleDigits = 15;

std::string TextOf(std::integral auto value) {
  return std::to_string(value);
}
inline std::string TextOf(signed char value) {
  return std::string(1, static_cast<char>(value));
}
inline std::string TextOf(VariantLong value) {
  return std::to_string(static_cast<std::int32_t>(value));
}
inline std::string TextOf(float value) {
  return GeneralText(value, kFloatDigits);
}
inline std::string TextOf(double value) {
  return GeneralText(value, kDoubleDigits);
}
inline std::string TextOf(const std::string& value) {
  return value;
}
std::string TextOf(const std::u16string& value);
std::string TextOf(const BinaryData& value);
std::string TextOf(const BlobPtr& value);
std::string TextOf(const platform::FileTime& value);
std::string TextOf(TKestrelDateTime value);
std::string TextOf(const VariantReferencePointer& value);
std::string TextOf(const Guid& value);

template <class T>
concept ParsedByInt64 =
    std::same_as<T, std::uint32_t> || std::same_as<T, std::int64_t> || std::same_as<T, std::uint64_t>;
template <class T>
concept ParsedByInt32 = !ParsedByInt64<T> && (std::integral<T> || std::same_as<T, VariantLong>);

void ParseText(std::string_view text, ParsedByInt32 auto& value) {
  value = static_cast<std::remove_reference_t<decltype(value)>>(ParseInt32(text));
}
void ParseText(std::string_view text, ParsedByInt64 auto& value) {
  value = static_cast<std::remove_reference_t<decltype(value)>>(ParseInt64(text));
}
void ParseText(std::string_view text, bool& value);
void ParseText(std::string_view text, float& value);
inline void ParseText(std::string_view text, double& value) {
  value = ParseDouble(text);
}
inline void ParseText(std::string_view text, std::string& value) {
  value = text;
}
void ParseText(std::string_view text, std::u16string& value);
/// A length is accepted up to that of the base64 bytes, or kMostUnfilledBytes; what no byte fills is 0.
void ParseText(std::string_view text, BinaryData& value);
inline constexpr std::uint64_t kMostUnfilledBytes = 0x10000;
/// The address is not followed, see BlobPtr::Unreadable.
void ParseText(std::string_view text, BlobPtr& value);
/// Throws VariantStringConversionException, whatever fails.
void ParseText(std::string_view text, platform::FileTime& value);
void ParseText(std::string_view text, TKestrelDateTime& value);
[[noreturn]] void ParseText(std::string_view text, VariantReferencePointer& value);
void ParseText(std::string_view text, Guid& value);

}  // namespace Kestrel
