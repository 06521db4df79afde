#include "base/guid.h"

#include <array>
#include <cstring>

#include "base/byte_order.h"
#include "base/exceptions.h"
#include "base/hex_digits.h"

namespace Kestrel {
namespace {

constexpr std::array<std::array<char, 2>, 256> kDigitPairs = [] {
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t i = 0; i < 256; ++i) pairs[i] = {kLowerHexDigits[i >> 4], kLowerHexDigits[i & 15]};
  return pairs;
}();

/// A digit's value as the high or as the low one of its byte, by character. With an invalid digit the byte exceeds 255.
struct DigitValues {
  std::array<std::uint16_t, 256> high;
  std::array<std::uint16_t, 256> low;
};
constexpr DigitValues kDigitValues = [] {
  DigitValues values{};
  for (std::size_t i = 0; i < 256; ++i) {
    const int value = HexDigitValue(static_cast<char>(i));
    values.high[i] = static_cast<std::uint16_t>(value < 0 ? 256 : value * 16);
    values.low[i] = static_cast<std::uint16_t>(value < 0 ? 256 : value);
  }
  return values;
}();

using GuidBytes = std::array<std::uint8_t, sizeof(Guid)>;

/// Column of the first of the two digits of each byte, in the order of the bytes in memory.
constexpr GuidBytes kColumns = {6, 4, 2, 0, 11, 9, 16, 14, 19, 21, 24, 26, 28, 30, 32, 34};
constexpr std::array<std::uint8_t, 4> kHyphens = {8, 13, 18, 23};

/// Writes the digits into a text of hyphens.
void PutDigits(char* text, const Guid& guid) {
  GuidBytes bytes;
  StoreLittleEndian(bytes.data(), guid);
  for (std::size_t i = 0; i < bytes.size(); ++i) std::memcpy(text + kColumns[i], kDigitPairs[bytes[i]].data(), 2);
}

}  // namespace

void GuidTools::GuidToStringCbA(char (&buffer)[kGuidBufferBytes], const Guid& guid) {
  std::memset(buffer, '-', kGuidCharacters);
  PutDigits(buffer, guid);
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
  GuidBytes bytes;
  unsigned seen = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* const digits = text.data() + kColumns[i];
    const unsigned byte = kDigitValues.high[static_cast<std::uint8_t>(digits[0])] |
                          kDigitValues.low[static_cast<std::uint8_t>(digits[1])];
    seen |= byte;
    bytes[i] = static_cast<std::uint8_t>(byte);
  }
  if (seen > 255) return false;
  guid = LoadLittleEndian<Guid>(bytes.data());
  return true;
}

std::string GuidToString(const Guid& guid) {
  std::string text(GuidTools::kGuidCharacters, '-');
  PutDigits(text.data(), guid);
  return text;
}

Guid GuidFromString(std::string_view text) {
  Guid guid;
  if (!StringToGuid(text, guid)) {
    throw GuidConversionException("Conversion of guid '" + std::string(text) + "' failed.");
  }
  return guid;
}

}  // namespace Kestrel
