#include "base/text_format.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/exceptions.h"

namespace Kestrel::Text {
namespace {

constexpr std::uint64_t kNoIndex = std::u16string::npos;

struct FormatRow {
  const char* name;
  std::u16string format;
  std::u16string expansion;  ///< behind "kept "; what is there before an error
  std::string reason = {};   ///< empty: no error
  std::uint64_t position = 0;
};

class Formats : public testing::TestWithParam<FormatRow> {};

TEST_P(Formats, ExpandOrFailWhereTheyMust) {
  const std::vector<std::u16string> arguments = {u"A", u"bc", u"", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"ten"};
  std::u16string output = u"kept ";
  std::string reason;
  std::uint64_t position = 0;
  try {
    Format(GetParam().format.c_str(), output, arguments);
  } catch (const InvalidFormatStringException& error) {
    const std::u16string suffix = u" : " + GetParam().format;
    EXPECT_TRUE(error.GetWideDescription().ends_with(suffix));
    reason = error.GetDescription().substr(0, error.GetWideDescription().size() - suffix.size());
    position = error.GetPosition();
    EXPECT_EQ(error.GetFormatString(), GetParam().format);
  }
  EXPECT_EQ(output, u"kept " + GetParam().expansion);
  EXPECT_EQ(reason, GetParam().reason);
  EXPECT_EQ(position, GetParam().position);
}

constexpr const char* kEnd = "Text::Format illegal end of format string:";
constexpr const char* kBegin = "Text::Format illegal begin of format string:";
constexpr const char* kArgument = "Text::Format illegal argument number :";
constexpr const char* kAligned = "Text::Format illegal argument number (,):";
constexpr const char* kFormat = "Text::Format illegal format string :";

INSTANTIATE_TEST_SUITE_P(
    , Formats,
    testing::Values(
        FormatRow{"Nothing", u"", u""}, FormatRow{"Plain", u"plain", u"plain"},
        FormatRow{"Arguments", u"{0}{1} {0}.", u"Abc A."}, FormatRow{"TwoDigits", u"{10}{01}", u"tenbc"},
        FormatRow{"Right", u"{1,5}", u"   bc"}, FormatRow{"Left", u"{1,-5}.", u"bc   ."},
        FormatRow{"TwoDigitsAligned", u"{10,2}", u"", kFormat}, FormatRow{"NeverCut", u"{1,1}", u"bc"},
        FormatRow{"WidestFill", u"{1,512}", std::u16string(510, u' ') + u"bc"},
        FormatRow{"TooWideFill", u"{1,513}", u"bc"}, FormatRow{"AbsurdWidth", u"{1,18446744073709551620}", u"bc"},
        FormatRow{"DoubledBraces", u"a}}b {{0}}", u"a}b {0}"}, FormatRow{"BraceBeforePlaceholder", u"{{{0}", u"{A"},
        FormatRow{"LostText", u"ab{{c", u"{c"}, FormatRow{"KeptTextBeforeLaterClose", u"ab{{c}}", u"ab{c}"},
        FormatRow{"LowByteDigits", u"{\u0131}{0,\u0134}{0,2\u0134}", u"bcA A"},
        FormatRow{"LoneClose", u"a}b", u"", kEnd, 1}, FormatRow{"LastClose", u"{0}}", u"A", kEnd, 3},
        FormatRow{"LoneOpen", u"x{0", u"", kBegin, kNoIndex}, FormatRow{"NoArgument", u"x{11}", u"x", kArgument, 1},
        FormatRow{"Empty", u"{0} {}", u"A ", kFormat, 4}, FormatRow{"Letter", u"{a}", u"", kFormat},
        FormatRow{"ThreeDigits", u"{001}", u"", kFormat}, FormatRow{"NoWidth", u"{0,}", u"", kFormat},
        FormatRow{"NoWidthLeft", u"{0,-}", u"", kFormat}, FormatRow{"WidthNoNumber", u"{0,1x}", u"", kFormat}),
    [](const auto& row) { return row.param.name; });

TEST(Format, AlignedPlaceholderHasItsOwnReason) {
  std::u16string output;
  EXPECT_NO_THROW(Format(nullptr, output, {}));
  try {
    Format(u"..{0,3}", output, {});
    FAIL();
  } catch (const InvalidFormatStringException& error) {
    EXPECT_EQ(error.GetDescription(), std::string(kAligned) + " : ..{0,3}");
    EXPECT_EQ(error.GetPosition(), 2u);
  }
}

TEST(Format, ManyBracesTakeLinearTime) {
  std::u16string output;
  Format(std::u16string(1'000'000, u'{').c_str(), output, {});
  EXPECT_EQ(output, std::u16string(500'000, u'{'));
}

}  // namespace
}  // namespace Kestrel::Text
