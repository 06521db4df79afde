// Invalid UTF-8 as Windows itself replaces it. Not among the tests of both systems, because Wine is laxer.
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
