/// Base64 with the standard alphabet of RFC 4648, section 4, in lines.
///
/// Encoding writes four characters for three bytes, padded with "=", and CR LF after every 76th character, also where
/// that is the last one.
///
/// Decoding skips CR and LF. A "=" ends the text; any other character outside the alphabet ends it with failure.
/// However the text ends, the bytes decoded so far stay, and an unfinished group of k characters gives k - 1 bytes.
///
/// Each direction exists for narrow and for UTF-16 text, because value lists travel as UTF-16 and need no narrow copy
/// this way. Only the two functions that return or fill a container allocate, and so can throw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel {

inline constexpr std::size_t kBase64LineCharacters = 76;
inline constexpr std::size_t kBase64LineBytes = kBase64LineCharacters / 4 * 3;

/// Characters that Base64EncodeTo writes for byteCount bytes, line ends included.
std::size_t Base64EncodedLength(std::size_t byteCount);
/// Writes exactly Base64EncodedLength(byteCount) characters to text and returns the end.
char* Base64EncodeTo(const void* bytes, std::size_t byteCount, char* text);
char16_t* Base64EncodeTo(const void* bytes, std::size_t byteCount, char16_t* text);

/// Room in bytes that decoding a text of this length needs.
constexpr std::size_t Base64DecodedBound(std::size_t characters) {
  return characters / 4 * 3 + 3;
}

struct Base64Decoded {
  std::size_t byteCount;
  bool success;
};
/// Decodes into room of Base64DecodedBound(text.size()) bytes.
Base64Decoded Base64DecodeTo(std::string_view text, std::uint8_t* bytes);
Base64Decoded Base64DecodeTo(std::u16string_view text, std::uint8_t* bytes);

std::string Base64Encode(const void* bytes, std::size_t byteCount);
/// Replaces bytes; returns the success flag.
bool Base64Decode(std::string_view text, std::vector<std::uint8_t>& bytes);

}  // namespace Kestrel
