#include "base/guid.h"

#include <array>

#include "base/exceptions.h"
#include "base/hex_digits.h"

namespace Kestrel {
namespace {

constexpr std::array<std::array<char, 2>, 256> kDigitPairs = [] {
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t i = 0; i < 256; ++i) pairs[i] = {kLowerHexDigits[i >> 4], kLowerHexDigits[i & 15]};
  return pairs;
}();

/// Column of the first of each byte's two digits. The text has the bytes of a number from the highest to the lowest.
constexpr std::array<std::uint8_t, 16> kColumns = {0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};
constexpr std::array<std::uint8_t, 4> kHyphens = {8, 13, 18, 23};

using TextOrder = std::array<std::uint8_t, 16>;

TextOrder InTextOrder(const Guid& guid) {
  TextOrder bytes = {std::uint8_t(guid.data1 >> 24), std::uint8_t(guid.data1 >> 16), std::uint8_t(guid.data1 >> 8),
                     std::uint8_t(guid.data1),       std::uint8_t(guid.data2 >> 8),  std::uint8_t(guid.data2),
                     std::uint8_t(guid.data3 >> 8),  std::uint8_t(guid.data3)};
  for (std::size_t i = 0; i < 8; ++i) bytes[8 + i] = guid.data4[i];
  return bytes;
}

Guid FromTextOrder(const TextOrder& bytes) {
  Guid guid;
  guid.data1 = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
  guid.data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
  guid.data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
  for (std::size_t i = 0; i < 8; ++i) guid.data4[i] = bytes[8 + i];
  return guid;
}

}  // namespace

void GuidTools::GuidToStringCbA(char (&buffer)[kGuidBufferBytes], const Guid& guid) {
  const TextOrder bytes = InTextOrder(guid);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    buffer[kColumns[i]] = kDigitPairs[bytes[i]][0];
    buffer[kColumns[i] + 1u] = kDigitPairs[bytes[i]][1];
  }
  for (const std::uint8_t column : kHyphens) buffer[column] = '-';
  buffer[kGuidCharacters] = '\0';
}

bool StringToGuid(std::string_view text, Guid& guid) {
  if (text.size() == GuidTools::kGuidCharacters + 2 && text.front() == '{' && text.back() == '}') {
    text = text.substr(1, GuidTools::kGuidCharacters);
  }
  if (text.size() != GuidTools::kGuidCharacters) return false;
  for (const std::uint8_t column : kHyphens) {
    if (text[column] != '-') return false;
  }
  TextOrder bytes;
  int seen = 0;  // negative once a character was no digit
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = HexDigitValue(text[kColumns[i]]);
    const int low = HexDigitValue(text[kColumns[i] + 1u]);
    seen |= high | low;
    bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  if (seen < 0) return false;
  guid = FromTextOrder(bytes);
  return true;
}

std::string GuidToString(const Guid& guid) {
  char buffer[GuidTools::kGuidBufferBytes];
  GuidTools::GuidToStringCbA(buffer, guid);
  return {buffer, GuidTools::kGuidCharacters};
}

Guid GuidFromString(std::string_view text) {
  Guid guid;
  if (!StringToGuid(text, guid)) {
    throw GuidConversionException("Conversion of guid '" + std::string(text) + "' failed.");
  }
  return guid;
}

}  // namespace Kestrel
