#include "tools/text.h"

#include <gtest/gtest.h>

#include "tools/display_width.h"

namespace tarnfind {
namespace {

struct TextRow {
  const char* name;
  std::string given;
  std::string expected;
};
void PrintTo(const TextRow& row, std::ostream* out) {
  *out << row.name;
}
const auto kRowName = [](const auto& row) { return row.param.name; };

class PrintableText : public testing::TestWithParam<TextRow> {};
TEST_P(PrintableText, HoldsNothingThatATerminalObeys) {
  EXPECT_EQ(Printable(GetParam().given), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(, PrintableText,
                         testing::ValuesIn(std::vector<TextRow>{
                             {"LettersOfAllLengths", "aé京😀", "aé京😀"},
                             {"EscapeSequence", "\x1b[31mred", "�[31mred"},
                             {"OneCharacterEscapeSequence",
                              "\xC2\x9B"
                              "31m",
                              "�31m"},
                             {"LineEndsAndDel", "a\r\nb\x7F", "a��b�"},
                             {"DirectionOverride",
                              "a\xE2\x80\xAE"
                              "b",
                              "a�b"},
                             {"Nul", std::string("a\0b", 3), "a�b"},
                             {"LoneContinuation",
                              "\x80"
                              "a",
                              "�a"},
                             {"CutAtTheEnd", "a\xE4\xBA", "a��"},
                             {"CutBeforeALetter",
                              "\xE4"
                              "a",
                              "�a"},
                             {"OverlongSlash", "\xC0\xAF", "��"},
                             {"Surrogate", "\xED\xA0\x80", "���"},
                             {"AboveTheLast", "\xF4\x90\x80\x80", "����"},
                             {"NoLeadByte", "\xFF", "�"},
                         }),
                         kRowName);

TEST(Utf16, LoneSurrogatesBecomeReplacementCharacters) {
  EXPECT_EQ(Utf8FromUtf16(u"aé京\xD83D\xDE00"), "aé京😀");
  EXPECT_EQ(Utf8FromUtf16(u"\xD83D"
                          u"a\xDE00\xD83D"),
            "�a��");
  EXPECT_EQ(Utf16FromUtf8("aé京😀"), u"aé京\xD83D\xDE00");
  EXPECT_EQ(Utf16FromUtf8("\xFF"), u"�");
}

TEST(Bstr, IsTakenWithItsWholeLength) {
  EXPECT_EQ(TakeBstr(SysAllocStringByteLen(reinterpret_cast<const char*>(u"a\0b"), 6)), std::string("a\0b", 3));
  EXPECT_EQ(TakeBstr(SysAllocStringByteLen(nullptr, 0)), "");
  EXPECT_EQ(TakeBstr(nullptr), "");
}

TEST(ErrorText, BecomesOneLine) {
  EXPECT_EQ(OneLine("  no \r\n\tanswer\x1b \r\n"), "no answer�");
}

struct ClipRow {
  const char* name;
  std::string text;
  std::size_t cells;
  std::string clipped;
};
class ClippedText : public testing::TestWithParam<ClipRow> {};
TEST_P(ClippedText, FitsTheCells) {
  const ClipRow& row = GetParam();
  EXPECT_EQ(ClipToWidth(row.text, row.cells), row.clipped);
  EXPECT_LE(DisplayWidth(row.clipped), row.cells);
  EXPECT_EQ(DisplayWidth(FitToWidth(row.text, row.cells)), row.cells);
}
INSTANTIATE_TEST_SUITE_P(, ClippedText,
                         testing::ValuesIn(std::vector<ClipRow>{
                             {"NarrowFits", "Küche", 5, "Küche"},
                             {"NarrowIsCut", "Küche", 4, "Küc…"},
                             {"WideFits", "京京", 4, "京京"},
                             {"WideIsCutWhole", "京京", 3, "京…"},
                             {"WideLeavesACellFree", "京京京", 4, "京…"},
                             {"CombiningMarkTakesNoCell",
                              "e\xCC\x81"
                              "x",
                              2,
                              "e\xCC\x81"
                              "x"},
                             {"PictographIsWide", "😀", 1, "…"},
                             {"OneCell", "ab", 1, "…"},
                             {"NoCell", "ab", 0, ""},
                         }),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace tarnfind
