// The conversions against a slow and obvious one, over random texts.
#include "platform/linux/utf8.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace platform;

namespace {

void AppendUtf16(char32_t character, std::u16string& text) {
  if (character >= 0x10000) {
    text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    character = 0xDC00 + ((character - 0x10000) & 0x3FF);
  }
  text += static_cast<char16_t>(character);
}

void AppendUtf8(char32_t character, std::string& text) {
  const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr int kLead[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kLead[more] | static_cast<int>(character >> 6 * more));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
}

/// Every prefix of a character's encoding is valid so far; the longest such prefix at a place is its maximal part.
bool IsPrefixOfACharacter(std::string_view bytes) {
  static const auto begins = [](unsigned lead, unsigned second) {
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
  };
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const std::size_t length = at(0) < 0xC2 || at(0) > 0xF4 ? 0 : at(0) < 0xE0 ? 2 : at(0) < 0xF0 ? 3 : 4;
  if (bytes.size() > length || (bytes.size() > 1 && !begins(at(0), at(1)))) return false;
  for (std::size_t i = 2; i < bytes.size(); ++i)
    if ((at(i) & 0xC0) != 0x80) return false;
  return true;
}

std::u16string ReferenceUtf16(std::string_view utf8) {
  std::u16string text;
  while (!utf8.empty()) {
    std::size_t n = 1;
    char32_t character = static_cast<unsigned char>(utf8[0]);
    if (character >= 0x80) {
      if (IsPrefixOfACharacter(utf8.substr(0, 1)))
        while (n < utf8.size() && IsPrefixOfACharacter(utf8.substr(0, n + 1))) ++n;
      const std::size_t length = character >= 0xF0 ? 4 : character >= 0xE0 ? 3 : 2;
      character &= 0x7FU >> length;
      for (std::size_t i = 1; i < n; ++i) character = character << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3F);
      if (n != length) character = 0xFFFD;
    }
    AppendUtf16(character, text);
    utf8.remove_prefix(n);
  }
  return text;
}

std::string ReferenceUtf8(std::u16string_view text) {
  std::string utf8;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    const bool high = character >= 0xD800 && character < 0xDC00;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000)
      character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00U);
    else if (character >= 0xD800 && character < 0xE000)
      character = 0xFFFD;
    AppendUtf8(character, utf8);
  }
  return utf8;
}

TEST(Utf8Random, AgreesWithTheObviousConversions) {
  std::mt19937 random(20240301);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  for (int round = 0; round < 40000; ++round) {
    // Pieces of every kind: runs of ASCII, characters of each length, and single bytes and units of any value.
    std::string utf8;
    std::u16string utf16;
    for (unsigned pieces = below(12); pieces > 0; --pieces) {
      const unsigned kind = below(8);
      const char32_t limit[] = {0x80, 0x800, 0x10000, 0x110000};
      const char32_t character = static_cast<char32_t>(random() % limit[kind % 4]);
      if (kind == 0) {
        const unsigned run = below(90);
        utf8.append(run, static_cast<char>('a' + below(26)));
        utf16.append(run, static_cast<char16_t>(u'a' + below(26)));
      } else if (kind < 6) {
        AppendUtf8(character, utf8);
        AppendUtf16(character, utf16);
      } else {
        utf8 += static_cast<char>(below(256));
        utf16 += static_cast<char16_t>(below(2) ? 0xD700 + below(0xA00) : below(0x10000));
      }
    }
    const std::u16string wide = ReferenceUtf16(utf8);
    ASSERT_EQ(Utf16LengthOf(utf8), wide.size()) << testing::PrintToString(utf8);
    std::u16string target(wide.size(), u'\0');
    ASSERT_EQ(Utf8ToUtf16(utf8, target.data(), target.size()), wide.size());
    ASSERT_EQ(target, wide) << testing::PrintToString(utf8);

    const std::string narrow = ReferenceUtf8(utf16);
    ASSERT_EQ(Utf8LengthOf(utf16), narrow.size());
    std::string bytes(narrow.size(), '\0');
    ASSERT_EQ(Utf16ToUtf8(utf16, bytes.data(), bytes.size()), narrow.size());
    ASSERT_EQ(bytes, narrow);
  }
}

}  // namespace
