#include "diagnostics/text_format.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/exceptions.h"
#include "base/text_conversion.h"

namespace Kestrel {
namespace {

TEST(Format, ExpandsOrFailsWhereItMust) {
  std::vector<std::u16string> arguments = {u"A", u"bc", u"", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"ten"};
  // The output, and for an error its place and words; "~" stands for the format.
  const auto outcome = [&](const std::u16string& format) {
    std::u16string output = u"kept ";
    try {
      Text::Format(format.c_str(), output, arguments);
    } catch (const Text::InvalidFormatStringException& error) {
      EXPECT_EQ(error.GetFormatString(), format);
      std::u16string words = error.GetWideDescription();
      EXPECT_TRUE(words.ends_with(u": : " + format));
      words.resize(words.size() - format.size());
      output += u"|" + Utf8ToWide(std::to_string(error.GetPosition())) + u" " + words + u"~";
    }
    return output.substr(5);
  };
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"{0}{1} {0}.", u"Abc A."},
      {u"{10}{01}", u"tenbc"},
      {u"{1,5}{1,-5}.{1,1}", u"   bcbc   .bc"},
      {u"{1,512}", std::u16string(510, u' ') + u"bc"},
      {u"{1,513}{1,18446744073709551620}", u"bcbc"},
      {u"a}}b {{0}} {{{0}", u"a}b {0} {A"},
      {u"ab{{c", u"{c"},
      {u"{\u0131}{0,\u0134}{0,2\u0134}", u"bcA A"},                      // digits by their low byte
      {std::u16string(1'000'000, u'{'), std::u16string(500'000, u'{')},  // in linear time
      {u"a}b", u"|1 Text::Format illegal end of format string: : ~"},
      {u"{0}}", u"A|3 Text::Format illegal end of format string: : ~"},
      {u"x{0", u"|18446744073709551615 Text::Format illegal begin of format string: : ~"},
      {u"x{11}", u"x|1 Text::Format illegal argument number : : ~"},
      {u"{0} {}", u"A |4 Text::Format illegal format string : : ~"},
  };
  for (const auto& [format, expected] : rows) EXPECT_EQ(outcome(format), expected);
  for (const auto* const format : {u"{a}", u"{001}", u"{10,2}", u"{0,}", u"{0,-}", u"{0,1x}"}) {
    EXPECT_EQ(outcome(format), u"|0 Text::Format illegal format string : : ~");
  }
  arguments.clear();
  EXPECT_EQ(outcome(u"..{0,3}"), u"..|2 Text::Format illegal argument number (,): : ~");
  EXPECT_NO_THROW(Text::Format(nullptr, arguments.emplace_back(), {}));
}

}  // namespace
}  // namespace Kestrel
