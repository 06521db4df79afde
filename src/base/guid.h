/// Globally unique identifiers and their text. The functions may be called on any thread.
///
///     text   6f9619ff-8b86-d011-b42d-00cf4fc964ff
///     bytes  FF 19 96 6F  86 8B  11 D0  B4 2D 00 CF 4F C9 64 FF
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel {

/// 16 bytes, in memory as on the wire: 32, 16 and 16 bits little-endian, then eight bytes in the order of the text.
struct Guid {
  std::uint32_t data1 = 0;
  std::uint16_t data2 = 0;
  std::uint16_t data3 = 0;
  std::uint8_t data4[8] = {};
  friend bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

namespace GuidTools {

inline constexpr std::size_t kGuidBufferBytes = 64;
inline constexpr std::size_t kGuidCharacters = 36;

/// Writes the text and a NUL: in lower case, without braces.
void GuidToStringCbA(char (&buffer)[kGuidBufferBytes], const Guid& guid);

}  // namespace GuidTools

/// Reads the text in either case, with or without braces around it. Returns false for any other text; guid is untouched
/// then.
bool StringToGuid(std::string_view text, Guid& guid);
/// The text in lower case, without braces.
std::string GuidToString(const Guid& guid);
/// As StringToGuid. Throws GuidConversionException "Conversion of guid '<text>' failed.".
Guid GuidFromString(std::string_view text);

}  // namespace Kestrel
