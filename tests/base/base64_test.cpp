#include "base/base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace Kestrel {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The slow and obvious form of both directions, bit by bit.
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string PlainEncode(const Bytes& bytes) {
  std::string text;
  const auto put = [&](char c) {
    text += c;
    if (text.size() % 78 == 76) text += "\r\n";
  };
  for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
    unsigned value = 0;
    for (std::size_t i = bit; i < bit + 6; ++i) {
      value = value * 2 + (i < bytes.size() * 8 ? bytes[i / 8] >> (7 - i % 8) & 1u : 0u);
    }
    put(kLetters[value]);
  }
  for (std::size_t n = bytes.size(); n % 3 != 0; ++n) put('=');
  return text;
}

bool PlainDecode(const std::u16string& text, Bytes& bytes) {
  std::vector<bool> bits;
  bool success = true;
  for (const char16_t c : text) {
    if (c == '\r' || c == '\n') continue;
    const std::size_t value = c < 128 ? kLetters.find(static_cast<char>(c)) : std::string_view::npos;
    if (value == std::string_view::npos) {
      success = c == '=';
      break;
    }
    for (int i = 5; i >= 0; --i) bits.push_back(value >> i & 1);
  }
  bytes.assign(bits.size() / 8, 0);
  for (std::size_t i = 0; i < bytes.size() * 8; ++i) bytes[i / 8] = std::uint8_t(bytes[i / 8] | bits[i] << (7 - i % 8));
  return success;
}

/// Source and room are heap blocks of exactly their size, so that a sanitizer sees what is touched behind them.
template <class Char>
void ExpectDecodes(const std::basic_string<Char>& text, const Bytes& bytes, bool success) {
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
  EXPECT_TRUE(std::equal(text.begin(), text.end(), room.begin()));
}

Bytes RandomBytes(std::mt19937& random, std::size_t count) {
  Bytes bytes(count);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
  return bytes;
}

TEST(Base64, EncodesKnownTexts) {
  const auto encode = [](const std::string& bytes) { return Base64Encode(bytes.data(), bytes.size()); };
  EXPECT_EQ(encode("f"), "Zg==");
  EXPECT_EQ(encode("\xFB\xFF\xBE"), "+/++");
  const std::string line = "MDEyMzQ1Njc4OTAxMjM0NTY3ODkwMTIzNDU2Nzg5MDEyMzQ1Njc4OTAxMjM0NTY3ODkwMTIzNDU2";
  const std::string bytes = "012345678901234567890123456789012345678901234567890123456";
  EXPECT_EQ(encode(bytes), line + "\r\n");
  EXPECT_EQ(encode(bytes + "f"), line + "\r\nZg==");
  EXPECT_EQ(encode(bytes.substr(0, 55)), line.substr(0, 72) + "NA==\r\n");
}

TEST(Base64, DecodesToTheFirstBadCharacter) {
  struct Row {
    std::u16string text;
    std::string bytes;
    bool success;
  };
  const Row rows[] = {
      {u"Zm9vYg==", "foob", true},
      {u"Zm9vYg", "foob", true},  // k pending values give k - 1 bytes
      {u"Zm9vY", "foo", true},
      {u"Zm9vYg==Zm9v", "foob", true},  // "=" ends the text
      {u"Z\r\nm\n9\rv\r\n", "foo", true},
      {u"Zm9vYm-v", "foob", false},
      {u" Zm9v", "", false},
      {u"Zm9vZm9\u0176", "foofo", false},  // its low byte is "v"
      {u"\u8041\u8041\u8041\u8041", "", false},
  };
  for (const auto& [text, bytes, success] : rows) ExpectDecodes(text, Bytes(bytes.begin(), bytes.end()), success);
}

TEST(Base64, AgreesWithThePlainFormAtEveryLength) {
  std::mt19937 random(20240501);
  for (std::size_t length = 0; length < 400; ++length) {
    const Bytes bytes = RandomBytes(random, length);
    const std::string text = PlainEncode(bytes);
    ExpectEncodes<char>(bytes, text);
    ExpectEncodes<char16_t>(bytes, text);
    ExpectDecodes(text, bytes, true);
    ExpectDecodes(std::u16string(text.begin(), text.end()), bytes, true);
  }
}

TEST(Base64, AgreesWithThePlainFormOnDamagedTexts) {
  std::mt19937 random(20240502);
  constexpr char16_t kUnits[] = {u'\r', u'\n', u'=', u'-', u'@', u'[', u'`', u'{',
                                 u'.',  u':',  0,    0x80, 0xC1, 0xFF, u'A'};
  for (int round = 0; round < 6000; ++round) {
    const std::string text = PlainEncode(RandomBytes(random, random() % 300));
    std::u16string wide(text.begin(), text.end());
    for (auto changes = random() % 4; changes > 0 && !wide.empty(); --changes) {
      const std::size_t position = random() % wide.size();
      const char16_t unit = random() % 2 ? kUnits[random() % std::size(kUnits)] : static_cast<char16_t>(random() % 256);
      wide.replace(position, random() % 2, random() % 2, unit);
    }
    Bytes bytes;
    const bool success = PlainDecode(wide, bytes);
    ExpectDecodes(wide, bytes, success);
    ExpectDecodes(std::string(wide.begin(), wide.end()), bytes, success);
    if (HasFailure()) break;
  }
}

}  // namespace
}  // namespace Kestrel
