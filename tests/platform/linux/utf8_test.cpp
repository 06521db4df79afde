// UTF-8 to the last detail. Not among the tests of both systems, because Wine is laxer with what is invalid and with a
// room that ends within a pair.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "platform/code_pages.h"

using namespace platform;

namespace {

TEST(Utf8, WhatIsInvalidIsReplacedByMaximalParts) {
  const std::pair<std::string, std::u16string> rows[] = {
      {"\xC0\x80|", u"\uFFFD\uFFFD|"},                        // overlong
      {"\xE0\x9F\xBF|", u"\uFFFD\uFFFD\uFFFD|"},              // overlong
      {"\xED\xA0\x80|", u"\uFFFD\uFFFD\uFFFD|"},              // surrogate
      {"\xF4\x90\x80\x80|", u"\uFFFD\uFFFD\uFFFD\uFFFD|"},    // above U+10FFFF
      {"\xF5|\xFF|", u"\uFFFD|\uFFFD|"},                      // no lead byte
      {"\xF0\x90\x80\xF0\x90\x80\x80", u"\uFFFD\U00010000"},  // cut before another one
  };
  // Behind ASCII of every length up to more than the blocks that are copied at once.
  for (const auto& [utf8, text] : rows)
    for (std::size_t n = 0; n < 70; ++n) {
      const std::string source = std::string(n, 'a') + utf8;
      char16_t target[90];
      const int units = MultiByteToWideChar(CP_UTF8, 0, source.data(), static_cast<int>(source.size()), target, 90);
      EXPECT_EQ(std::u16string(target, static_cast<std::size_t>(units)), std::u16string(n, u'a') + text)
          << testing::PrintToString(source);
    }
}

/// From a heap block of the text's size into one of the room's, so that a sanitizer sees an access behind them.
template <class To, class From, class Function>
std::basic_string<To> Converted(Function function, const std::basic_string<From>& text, std::size_t room) {
  const std::vector<From> source(text.begin(), text.end());
  std::vector<To> target(room);
  const int written =
      function(CP_UTF8, 0, source.data(), static_cast<int>(text.size()), target.data(), static_cast<int>(room));
  return std::basic_string<To>(target.data(), static_cast<std::size_t>(written));
}

/// Every third room is just enough.
std::size_t Slack(std::mt19937& random) {
  return random() % 3 * (random() % 64);
}

/// UTF-16 to UTF-8 as the definition reads, one character after the other.
std::string Obvious(const std::u16string& text) {
  constexpr char32_t kLeads[] = {0, 0xC0, 0xE0, 0xF0};
  std::string utf8;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if ((character & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
      character = 0x10000 + ((character & 0x3FF) << 10) + (text[++i] & 0x3FF);
    } else if ((character & 0xF800) == 0xD800) {
      character = 0xFFFD;
    }
    unsigned more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    utf8 += static_cast<char>(kLeads[more] | character >> 6 * more);
    while (more-- > 0) utf8 += static_cast<char>(0x80 | (character >> 6 * more & 0x3F));
  }
  return utf8;
}

/// Units of few kinds at a time, so that each kind fills blocks and meets each other one at their borders.
TEST(Utf8, IsWhatItsDefinitionSaysWhateverUnitsStandTogether) {
  const std::u16string units = u"\u0001\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\xD800\xDBFF\xDC00\xDFFF";
  std::mt19937 random(20240302);
  for (int round = 0; round < 20000; ++round) {
    const std::size_t kinds[] = {random(), random(), random(), random()};
    const std::size_t different = 1 + random() % std::size(kinds);
    std::u16string text(1 + random() % 80, u'a');
    for (char16_t& unit : text) unit = units[kinds[random() % different] % units.size()];
    const std::string expected = Obvious(text);
    ASSERT_EQ(Converted<char>(WideCharToMultiByte, text, expected.size() + Slack(random)), expected) << round;
  }
}

/// UTF-8 to UTF-16 as the standard's table of well-formed sequences reads, one character after the other.
std::u16string Obvious(const std::string& utf8) {
  constexpr struct {
    unsigned leads[2], seconds[2];
    std::size_t length;
  } kWellFormed[] = {
      {{0x00, 0x7F}, {}, 1},           {{0xC2, 0xDF}, {0x80, 0xBF}, 2}, {{0xE0, 0xE0}, {0xA0, 0xBF}, 3},
      {{0xE1, 0xEC}, {0x80, 0xBF}, 3}, {{0xED, 0xED}, {0x80, 0x9F}, 3}, {{0xEE, 0xEF}, {0x80, 0xBF}, 3},
      {{0xF0, 0xF0}, {0x90, 0xBF}, 4}, {{0xF1, 0xF3}, {0x80, 0xBF}, 4}, {{0xF4, 0xF4}, {0x80, 0x8F}, 4},
  };
  std::u16string text;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto at = [&](std::size_t k) { return i + k < utf8.size() ? static_cast<unsigned char>(utf8[i + k]) : 0U; };
    const auto row =
        std::ranges::find_if(kWellFormed, [&](auto r) { return r.leads[0] <= at(0) && at(0) <= r.leads[1]; });
    std::size_t length = 1;
    char32_t character = 0xFFFD;
    if (row != std::end(kWellFormed)) {
      char32_t decoded = row->length == 1 ? at(0) : at(0) & (0x7F >> row->length);
      for (; length < row->length; ++length) {
        const unsigned byte = at(length), lowest = length == 1 ? row->seconds[0] : 0x80;
        if (byte < lowest || byte > (length == 1 ? row->seconds[1] : 0xBF)) break;
        decoded = decoded << 6 | (byte & 0x3F);
      }
      if (length == row->length) character = decoded;
    }
    i += length;
    if (character < 0x10000) {
      text += static_cast<char16_t>(character);
    } else {
      text += {static_cast<char16_t>(0xD7C0 + (character >> 10)), static_cast<char16_t>(0xDC00 + (character & 0x3FF))};
    }
  }
  return text;
}

/// Pieces of few kinds at a time, so that each fills blocks and meets each other one at their borders.
TEST(Utf8, IsWhatTheTableSaysWhateverBytesStandTogether) {
  std::vector<std::string> pieces = {"a", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80"};
  pieces.insert(pieces.end(),
                {"\xEF\xBF\xBF", "\xE6\x9D\xB1", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "ASCII of a block"});
  for (const char byte : std::string("\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC3\xE0\xE6\xED\xF0\xF1\xF4\xF5\xFF")) {
    pieces.push_back({byte});
  }
  std::mt19937 random(20240303);
  for (int round = 0; round < 30000; ++round) {
    const std::size_t kinds[] = {random(), random(), random(), random()};
    const std::size_t different = 1 + random() % std::size(kinds);
    std::string text;
    for (std::size_t count = 1 + random() % 40; count > 0; --count)
      text += pieces[kinds[random() % different] % pieces.size()];
    const std::u16string expected = Obvious(text);
    ASSERT_EQ(Converted<char16_t>(MultiByteToWideChar, text, expected.size() + Slack(random)), expected)
        << testing::PrintToString(text);
  }
}

}  // namespace
