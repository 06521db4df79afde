/// The text forms of the held types: ToString writes one, FromString reads one.
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
/// Lengths and sizes are written as their low 32 bits. The texts of tags 13 and 14 are not read back as the same value:
/// base64 has line breaks, where reading ends, and no blank separates size and address. The platform has them so.
///
/// Errors  FromString leaves the value as it was. It throws StringConversionException for tags 0 and 9,
///         VariantStringToValueConversionException for 13, 14 and 17, VariantStringConversionException for 15,
///         EKestrelDateTime for 16, GuidConversionException for 18, SystemException for 12 and 16. ToString of a
///         number, date or guid throws VariantStringConversionException whatever the cause, of tag 12 SystemException.
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

std::string ToString(std::integral auto value) {
  return std::to_string(value);
}
inline std::string ToString(signed char value) {
  return std::string(1, static_cast<char>(value));
}
inline std::string ToString(VariantLong value) {
  return std::to_string(static_cast<std::int32_t>(value));
}
inline std::string ToString(float value) {
  return GeneralText(value, kFloatDigits);
}
inline std::string ToString(double value) {
  return GeneralText(value, kDoubleDigits);
}
inline std::string ToString(const std::string& value) {
  return value;
}
std::string ToString(const std::u16string& value);
std::string ToString(const BinaryData& value);
std::string ToString(const BlobPtr& value);
std::string ToString(const platform::FileTime& value);
std::string ToString(TKestrelDateTime value);
std::string ToString(const VariantReferencePointer& value);
std::string ToString(const Guid& value);

template <class T>
concept ParsedByInt64 =
    std::same_as<T, std::uint32_t> || std::same_as<T, std::int64_t> || std::same_as<T, std::uint64_t>;
template <class T>
concept ParsedByInt32 = !ParsedByInt64<T> && (std::integral<T> || std::same_as<T, VariantLong>);

void FromString(ParsedByInt32 auto& value, std::string_view text) {
  value = static_cast<std::remove_reference_t<decltype(value)>>(ParseInt32(text));
}
void FromString(ParsedByInt64 auto& value, std::string_view text) {
  value = static_cast<std::remove_reference_t<decltype(value)>>(ParseInt64(text));
}
void FromString(bool& value, std::string_view text);
void FromString(float& value, std::string_view text);
inline void FromString(double& value, std::string_view text) {
  value = ParseDouble(text);
}
inline void FromString(std::string& value, std::string_view text) {
  value = text;
}
void FromString(std::u16string& value, std::string_view text);
/// Decodes the first line of base64; the bytes that it does not fill are 0. A length is refused where it is greater
/// than all lines could fill, and than kMostUnfilledBytes, because a short text must not make gigabytes of zeros.
void FromString(BinaryData& value, std::string_view text);
inline constexpr std::uint64_t kMostUnfilledBytes = 0x10000;
/// Gives an unreadable blob, see BlobPtr.
void FromString(BlobPtr& value, std::string_view text);
/// Throws VariantStringConversionException, whatever fails.
void FromString(platform::FileTime& value, std::string_view text);
void FromString(TKestrelDateTime& value, std::string_view text);
[[noreturn]] void FromString(VariantReferencePointer& value, std::string_view text);
void FromString(Guid& value, std::string_view text);

}  // namespace Kestrel
