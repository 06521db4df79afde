#include "base/base64.h"

#include <gtest/gtest.h>

#include <random>

namespace Kestrel {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The slow and obvious form of both directions.
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string PlainEncode(const Bytes& bytes) {
  const auto byte = [&](std::size_t index) { return index < bytes.size() ? bytes[index] : 0u; };
  std::string text;
  for (std::size_t i = 0; i < (bytes.size() + 2) / 3 * 4; ++i) {
    const unsigned pair = byte(i * 6 / 8) << 8 | byte(i * 6 / 8 + 1);
    text += i * 6 < bytes.size() * 8 ? kLetters[pair >> (10 - i * 6 % 8) & 63] : '=';
    if (i % 76 == 75) text += "\r\n";
  }
  return text;
}

bool PlainDecode(const std::u16string& text, Bytes& bytes) {
  unsigned pending = 0, bits = 0;
  for (const char16_t c : text) {
    if (c == '\r' || c == '\n') continue;
    const std::size_t value = c < 128 ? kLetters.find(static_cast<char>(c)) : std::string_view::npos;
    if (value == std::string_view::npos) return c == '=';
    pending = pending << 6 | static_cast<unsigned>(value);
    bits += 6;
    if (bits >= 8) bytes.push_back(static_cast<std::uint8_t>(pending >> (bits -= 8)));
  }
  return true;
}

/// Source and room are heap blocks of exactly their size, so that a sanitizer sees what is touched behind them.
template <class Char>
void ExpectDecodes(const std::u16string& text, const Bytes& bytes, bool success) {
  const std::vector<Char> source(text.begin(), text.end());
  Bytes room(Base64DecodedBound(source.size()));
  const Base64Decoded decoded = Base64DecodeTo(std::basic_string_view<Char>(source.data(), source.size()), room.data());
  room.resize(decoded.byteCount);
  EXPECT_EQ(decoded.success, success) << testing::PrintToString(text);
  EXPECT_EQ(room, bytes) << testing::PrintToString(text);
}

template <class Char>
void ExpectEncodes(const Bytes& bytes, const std::string& text) {
  std::vector<Char> room(text.size());
  ASSERT_EQ(Base64EncodedLength(bytes.size()), text.size());
  EXPECT_EQ(Base64EncodeTo(bytes.data(), bytes.size(), room.data()), room.data() + text.size());
  EXPECT_EQ(std::string(room.begin(), room.end()), text);
}

TEST(Base64, DecodesToTheFirstBadCharacter) {
  ExpectDecodes<char16_t>(u"Z\r\nm9v\rYg==Zm9v", {'f', 'o', 'o', 'b'}, true);
  ExpectDecodes<char16_t>(u"Zm9vZm9\u0176", {'f', 'o', 'o', 'f', 'o'}, false);  // its low byte is "v"
}

/// Through every length of the vector code's blocks, and with up to three changes.
TEST(Base64, AgreesWithThePlainForm) {
  std::mt19937 random(20240501);
  constexpr char16_t kUnits[] = u"\r\n=-@[`{.:\0\u0080\u00C1\u00FFA";
  for (std::size_t round = 0; round < 8000 && !testing::Test::HasFailure(); ++round) {
    Bytes bytes(round % 400), decoded;
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    const std::string text = PlainEncode(bytes);
    ExpectEncodes<char>(bytes, text);
    ExpectEncodes<char16_t>(bytes, text);
    std::u16string wide(text.begin(), text.end());
    for (std::size_t changes = round < 400 ? 0 : random() % 4; changes > 0 && !wide.empty(); --changes) {
      const std::size_t position = random() % wide.size();
      const char16_t unit = random() % 2 ? kUnits[random() % 15] : static_cast<char16_t>(random() % 256);
      wide.replace(position, random() % 2, random() % 2, unit);
    }
    const bool success = PlainDecode(wide, decoded);
    ExpectDecodes<char>(wide, decoded, success);
    ExpectDecodes<char16_t>(wide, decoded, success);
  }
}

/// In the middle of three lines, which the vector code takes whole.
TEST(Base64, AgreesWithThePlainFormForEveryCharacterOfALine) {
  for (char16_t unit = 0; unit < 257; ++unit)
    for (std::size_t place = 0; place < 76; place += 5) {
      std::u16string text;
      for (int line = 0; line < 3; ++line) text += std::u16string(76, u'A') + u"\r\n";
      text[78 + place] = unit;
      Bytes decoded;
      const bool success = PlainDecode(text, decoded);
      ExpectDecodes<char16_t>(text, decoded, success);
      if (unit < 256) ExpectDecodes<char>(text, decoded, success);
    }
}

}  // namespace
}  // namespace Kestrel
