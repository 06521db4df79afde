/// Globally unique identifiers and their text "6f9619ff-8b86-d011-b42d-00cf4fc964ff".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel {

/// In memory order: 32, 16 and 16 bits little-endian, then eight bytes. 16 bytes on the wire.
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

/// Writes the text, lower case, without braces, NUL-terminated.
void GuidToStringCbA(char (&buffer)[kGuidBufferBytes], const Guid& guid);

}  // namespace GuidTools

/// Reads the text, in either case, with or without braces around it. False, and guid untouched, for anything else.
bool StringToGuid(std::string_view text, Guid& guid);
/// The text of a guid.
std::string GuidToString(const Guid& guid);
/// Throws GuidConversionException "Conversion of guid '<text>' failed.".
Guid GuidFromString(std::string_view text);

}  // namespace Kestrel
