#include "platform/code_pages.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

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
  const auto into = [&](int room) {
    const auto target = std::make_unique<To[]>(static_cast<std::size_t>(room));
    const int written = function(codePage, 0, source.get(), length, target.get(), room);
    return std::basic_string<To>(target.get(), static_cast<std::size_t>(written));
  };
  const std::basic_string<To> converted = into(needed);
  EXPECT_EQ(converted.size(), static_cast<std::size_t>(needed));
  EXPECT_EQ(into(3 * length), converted) << "where any text of that length has room, another path is taken";
  EXPECT_EQ(into(needed + 16 + needed % 64), converted) << "vectors convert as much as their room allows";
  if (needed > 1) {
    EXPECT_TRUE(into(needed / 2).empty());
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  }
  return converted;
}

std::u16string Widen(const std::string& text, std::uint32_t codePage = CP_UTF8) {
  return Converted<char16_t>(MultiByteToWideChar, codePage, text);
}
std::string Narrow(const std::u16string& text, std::uint32_t codePage = CP_UTF8) {
  return Converted<char>(WideCharToMultiByte, codePage, text);
}

/// Pieces in random order. Between them stands ASCII of every length, also of more than is copied at once.
TEST(Utf8, BecomesUtf16AndBackAndWhatIsInvalidIsReplaced) {
  const struct {
    std::string utf8;
    std::u16string utf16;
    bool widens = true, narrows = true;
  } pieces[] = {
      {"\x01\x7F", u"\u0001\u007F"},
      {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
      {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
      {"a\0b"s, u"a\0b"s},
      {"\x80z", u"\uFFFDz", true, false},
      {"\xC3z\xE6\x9Dz\xF0\x9F\x98z", u"\uFFFDz\uFFFDz\uFFFDz", true, false},
      {"\xE6\x9D\xC3\xBC", u"\uFFFD\u00FC", true, false},
      {"\xEF\xBF\xBDz", u"\xD800z", false},
      {"\xEF\xBF\xBDz", u"\xDFFFz", false},
      {"\xEF\xBF\xBD\xF0\x90\x80\x80", u"\xD800\xD800\xDC00", false},
  };
  const std::string cuts[] = {"", "\xC3", "\xE6", "\xE6\x9D", "\xF0", "\xF0\x9F", "\xF0\x9F\x98"};
  std::mt19937 random(20240301);
  for (int round = 0; round < 5000; ++round) {
    std::string widened, narrowed;
    std::u16string wide, narrowable;
    for (unsigned count = random() % 8; count > 0; --count) {
      const auto& piece = pieces[random() % std::size(pieces)];
      const std::size_t ascii = random() % 90;
      if (piece.widens) {
        widened += std::string(ascii, 'a') + piece.utf8;
        wide += std::u16string(ascii, u'a') + piece.utf16;
      }
      if (piece.narrows) {
        narrowable += piece.utf16 + std::u16string(ascii, u'a');
        narrowed += piece.utf8 + std::string(ascii, 'a');
      }
    }
    const std::string& cut = cuts[random() % std::size(cuts)];
    ASSERT_EQ(Widen("a" + widened + cut), u"a" + wide + (cut.empty() ? u"" : u"\uFFFD")) << round;
    ASSERT_EQ(Narrow(u"a" + narrowable), "a" + narrowed) << round;
  }
}

TEST(AnsiCodePage, IsWindows1252) {
  const std::string bytes = "\x80\x81\x8D\x8E\x8F\x90\x9C\x9D\x9F\xA0\xE4\xFF";
  const std::u16string text = u"\u20AC\u0081\u008D\u017D\u008F\u0090\u0153\u009D\u0178\u00A0\u00E4\u00FF";
  EXPECT_EQ(Widen(bytes, CP_ACP), text);
  EXPECT_EQ(Narrow(text, CP_ACP), bytes);
  EXPECT_EQ(Narrow(u"a\u0416\u6771\U0001F600b", CP_ACP), "a????b");
}

TEST(CodePages, LengthOfMinusOneIncludesTheTerminatorAndNoTextIsRefused) {
  char16_t wide[8];
  char narrow[8];
  for (const std::uint32_t codePage : {CP_ACP, CP_UTF8}) {
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "abc", -1, wide, 8), 4);
    EXPECT_EQ(std::u16string(wide), u"abc");
    EXPECT_EQ(WideCharToMultiByte(codePage, 0, u"abc", -1, narrow, 4), 4);
    EXPECT_STREQ(narrow, "abc");
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "a", 0, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, "a", 1, wide, 8), 1);
}

}  // namespace
