#include "tools/text.h"

#include <gtest/gtest.h>

#include "tools/display_width.h"

namespace tarnfind {
namespace {

TEST(PrintableText, HoldsNothingThatATerminalObeys) {
  const struct {
    const char* name;
    std::string given, expected;
  } rows[] = {
      {"letters of all lengths", "aé京😀", "aé京😀"},
      {"escape sequence", "\x1b[31mred", "�[31mred"},
      {"escape in one character", "\xC2\x9B[m", "�[m"},
      {"line ends and DEL", "a\r\nb\x7F", "a��b�"},
      {"override of direction", "a\xE2\x80\xAE<", "a�<"},
      {"marks of direction", "a\xD8\x9C\xE2\x81\xA6<", "a��<"},
      {"invisible", "a\xC2\xAD\xE1\xA0\x8E\xE3\x85\xA4\xEF\xBF\xB9<", "a����<"},
      {"tag", "a\xF3\xA0\x81\x81<", "a�<"},
      {"NUL", std::string("a\0b", 3), "a�b"},
      {"lone continuation", "\x80<", "�<"},
      {"cut at the end", "a\xE4\xBA", "a��"},
      {"overlong slash", "\xC0\xAF", "��"},
      {"surrogate", "\xED\xA0\x80", "���"},
      {"above the last", "\xF4\x90\x80\x80", "����"},
  };
  for (const auto& row : rows) EXPECT_EQ(Printable(row.given), row.expected) << row.name;
}

TEST(Utf16, LoneSurrogatesBecomeReplacementCharacters) {
  EXPECT_EQ(Utf8FromUtf16(u"aé京\xD83D\xDE00"), "aé京😀");
  EXPECT_EQ(Utf8FromUtf16(u"\xD83D-\xDE00\xD83D"), "�-��");
  EXPECT_EQ(Utf16FromUtf8("aé京😀"), u"aé京\xD83D\xDE00");
  EXPECT_EQ(Utf16FromUtf8("\xFF"), u"�");
}

TEST(Bstr, IsTakenWithItsWholeLength) {
  EXPECT_EQ(TakeBstr(SysAllocStringByteLen(reinterpret_cast<const char*>(u"a\0b"), 6)), std::string("a\0b", 3));
  EXPECT_EQ(TakeBstr(nullptr), "");
}

TEST(ErrorText, BecomesOneLine) {
  EXPECT_EQ(OneLine("  no \r\n\tanswer\x1b \r\n"), "no answer�");
}

TEST(ClippedText, FitsTheCells) {
  const struct {
    std::string text;
    std::size_t cells;
    std::string clipped;
  } rows[] = {
      {"Küche", 5, "Küche"}, {"Küche", 4, "Küc…"}, {"京京", 4, "京京"},
      {"京京", 3, "京…"},    {"京京京", 4, "京…"}, {"e\xCC\x81<", 2, "e\xCC\x81<"},  // a combining mark takes no cell
      {"😀", 1, "…"},         {"ab", 0, ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ClipToWidth(row.text, row.cells), row.clipped);
    EXPECT_EQ(DisplayWidth(FitToWidth(row.text, row.cells)), row.cells) << row.text;
  }
}

}  // namespace
}  // namespace tarnfind
