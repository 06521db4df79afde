#include "platform/code_pages.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;
using namespace std::string_literals;

namespace {

/// Converts into a heap block of exactly the size that was asked for, so that a sanitizer sees an access behind it.
template <class To, class From, class Function>
std::basic_string<To> Converted(Function function, std::uint32_t codePage, const std::basic_string<From>& text) {
  const int length = static_cast<int>(text.size());
  const auto source = std::make_unique<From[]>(text.size());
  text.copy(source.get(), text.size());
  const int needed = function(codePage, 0, source.get(), length, nullptr, 0);
  const auto target = std::make_unique<To[]>(static_cast<std::size_t>(needed));
  EXPECT_EQ(function(codePage, 0, source.get(), length, target.get(), needed), needed);
  if (needed > 1) {
    SetLastError(0);
    EXPECT_EQ(function(codePage, 0, source.get(), length, target.get(), needed / 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(function(codePage, 0, source.get(), length, target.get(), needed), needed);
  }
  // With more room than any text of that length needs, another path is taken.
  std::basic_string<To> roomy(text.size() * 3, To{});
  EXPECT_EQ(function(codePage, 0, source.get(), length, roomy.data(), static_cast<int>(roomy.size())), needed);
  roomy.resize(static_cast<std::size_t>(needed));
  EXPECT_EQ(roomy, std::basic_string<To>(target.get(), static_cast<std::size_t>(needed)));
  return roomy;
}

std::u16string Widen(const std::string& text, std::uint32_t codePage = CP_UTF8) {
  return Converted<char16_t>(MultiByteToWideChar, codePage, text);
}
std::string Narrow(const std::u16string& text, std::uint32_t codePage = CP_UTF8) {
  return Converted<char>(WideCharToMultiByte, codePage, text);
}

struct Utf8Row {
  const char* name;
  std::string utf8;
  std::u16string utf16;
};

class Utf8 : public testing::TestWithParam<Utf8Row> {};

/// Each row alone, and behind and before ASCII of every length up to more than the blocks that are copied at once.
TEST_P(Utf8, BecomesUtf16) {
  for (std::size_t n = 0; n < 140; n += n < 36 ? 1 : 13) {
    SCOPED_TRACE(n);
    const std::string ascii(n, 'a');
    const std::u16string wide(n, u'a');
    EXPECT_EQ(Widen(ascii + GetParam().utf8 + ascii), wide + GetParam().utf16 + wide);
  }
}

INSTANTIATE_TEST_SUITE_P(, Utf8,
                         testing::ValuesIn(std::vector<Utf8Row>{
                             {"OneByte", "\x01\x7F", u"\u0001\u007F"},
                             {"TwoBytes", "\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
                             {"ThreeBytes", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
                              u"\u0800\uD7FF\uE000\uFFFF"},
                             {"FourBytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
                             {"EmbeddedNul", "a\0b"s, u"a\0b"s},
                             {"LoneContinuation", "\x80z", u"\uFFFDz"},
                             {"LeadBeforeAscii", "\xC3z\xE6\x9Dz\xF0\x9F\x98z", u"\uFFFDz\uFFFDz\uFFFDz"},
                             {"LeadBeforeLead", "\xE6\x9D\xC3\xBC", u"\uFFFD\u00FC"},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST(Utf8Cut, SequenceCutAtTheEndIsOneReplacement) {
  for (const auto* cut : {"\xC3", "\xE6", "\xE6\x9D", "\xF0", "\xF0\x9F", "\xF0\x9F\x98"}) {
    EXPECT_EQ(Widen(cut), u"\uFFFD");
    EXPECT_EQ(Widen("twenty characters..." + std::string(cut)), u"twenty characters...\uFFFD");
  }
}

TEST(Utf16, BecomesUtf8) {
  const Utf8Row rows[] = {
      {"every length", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
       u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"},
      {"high surrogate alone", "\xEF\xBF\xBDz", u"\xD800z"},
      {"low surrogate alone", "\xEF\xBF\xBDz", u"\xDFFFz"},
      {"two high surrogates", "\xEF\xBF\xBD\xF0\x90\x80\x80", u"\xD800\xD800\xDC00"},
      {"reversed pair", "\xEF\xBF\xBD\xEF\xBF\xBD", u"\xDC00\xD800"},
  };
  for (const Utf8Row& row : rows)
    for (std::size_t n = 0; n < 80; n += n < 20 ? 1 : 7) {
      SCOPED_TRACE(std::string(row.name) + " " + std::to_string(n));
      EXPECT_EQ(Narrow(std::u16string(n, u'a') + row.utf16 + std::u16string(n, u'b')),
                std::string(n, 'a') + row.utf8 + std::string(n, 'b'));
    }
}

TEST(AnsiCodePage, IsWindows1252) {
  const std::string bytes = "\x80\x81\x8D\x8E\x8F\x90\x9C\x9D\x9F\xA0\xE4\xFF";
  const std::u16string text = u"\u20AC\u0081\u008D\u017D\u008F\u0090\u0153\u009D\u0178\u00A0\u00E4\u00FF";
  EXPECT_EQ(Widen(bytes, CP_ACP), text);
  EXPECT_EQ(Narrow(text, CP_ACP), bytes);
  EXPECT_EQ(Narrow(u"a\u0416\u6771\U0001F600b", CP_ACP), "a????b");
  EXPECT_EQ(Narrow(u"a\0b"s, CP_ACP), "a\0b"s);
}

TEST(CodePages, TerminatorIsConvertedWhereTheLengthIsMinusOne) {
  char16_t wide[8];
  char narrow[8];
  for (const std::uint32_t codePage : {CP_ACP, CP_UTF8}) {
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "abc", -1, nullptr, 0), 4);
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "abc", -1, wide, 8), 4);
    EXPECT_EQ(WideCharToMultiByte(codePage, 0, u"abc", -1, narrow, 4), 4);
    EXPECT_STREQ(narrow, "abc");
    EXPECT_EQ(std::u16string(wide), u"abc");
  }
}

TEST(CodePages, RefusedArgumentsSetTheLastError) {
  char16_t wide[8];
  const auto error = [](int result) { return result == 0 ? GetLastError() : 0; };
  EXPECT_EQ(error(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide, 8)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(error(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 8)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(error(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 8)), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, "a", 1, wide, 8), 1);
}

}  // namespace
