#include <array>

#include "base/checked_string.h"
#include "base/guid.h"
#include "base/xml_escape.h"
#include "thrown.h"

namespace Kestrel {
namespace {

constexpr Guid kGuid = {0x6F9619FF, 0x8B86, 0xD011, {0xB4, 0x2D, 0x00, 0xCF, 0x4F, 0xC9, 0x64, 0xFF}};
const std::string kGuidText = "6f9619ff-8b86-d011-b42d-00cf4fc964ff";

TEST(Guid, IsWrittenInLowerCase) {
  char buffer[GuidTools::kGuidBufferBytes];
  GuidTools::GuidToStringCbA(buffer, kGuid);
  EXPECT_EQ(buffer, kGuidText);
  EXPECT_EQ(GuidToString({0x1, 0x2, 0x3, {4}}), "00000001-0002-0003-0400-000000000000");
}

TEST(Guid, IsReadWithAndWithoutBraces) {
  for (const std::string& text :
       {kGuidText, "{" + kGuidText + "}", std::string("6F9619FF-8B86-D011-B42D-00CF4FC964FF")}) {
    EXPECT_EQ(GuidFromString(text), kGuid) << text;
  }
  std::string hyphenMoved = kGuidText;
  std::swap(hyphenMoved[13], hyphenMoved[14]);
  for (const std::string& text :
       {std::string(), "{" + kGuidText, kGuidText + "}", "{" + kGuidText + "} ", "{" + kGuidText + ")", kGuidText + "0",
        kGuidText.substr(1), "g" + kGuidText.substr(1), "\xFF" + kGuidText.substr(1), hyphenMoved}) {
    Guid guid = kGuid;
    EXPECT_FALSE(StringToGuid(text, guid)) << text;
    EXPECT_EQ(guid, kGuid) << text;
  }
  EXPECT_EQ(ErrorOf([] { GuidFromString("{x}"); }), "0/0 Conversion of guid '{x}' failed.");
}

TEST(XmlEscape, WritesEntitiesAndByteReferences) {
  EXPECT_EQ(XmlEscape(""), "");
  EXPECT_EQ(XmlEscape("plain\t text"), "plain\t text");
  EXPECT_EQ(XmlEscape("<a b='1'>&\"</a>"), "&lt;a b=&apos;1&apos;&gt;&amp;&quot;&lt;/a&gt;");
  EXPECT_EQ(XmlEscape("K\xC3\xA4se\x80\x7F\xFF"), "K&#195;&#164;se&#128;\x7F&#255;");
}

/// Room of some units, with one more behind that must not be touched.
template <class Char>
struct Room {
  explicit Room(std::size_t count) : units(count) { text.fill('#'); }
  BufferRest<Char> Whole() { return {text.data(), units}; }
  std::string Text() const {
    EXPECT_EQ(text[units], Char{'#'});
    std::string result;
    for (const Char* unit = text.data(); *unit != 0; ++unit) result += static_cast<char>(*unit);
    return result;
  }
  std::array<Char, 600> text;
  std::size_t units;
};

template <class Char>
class CheckedString : public testing::Test {};
using Chars = testing::Types<char, char16_t>;
TYPED_TEST_SUITE(CheckedString, Chars);

TYPED_TEST(CheckedString, StopsAtTheEndOfTheRoomAndThrows) {
  const std::string tooSmall = "2/2147942522 [ErrorCode #2147942522] in Kestrel::CheckedStringCch";
  const std::string invalid = "2/2147942487 [ErrorCode #2147942487] in Kestrel::CheckedStringCch";
  const std::basic_string<TypeParam> abc = {'a', 'b', 'c', 0, 'd'};

  Room<TypeParam> exact(4);
  BufferRest<TypeParam> rest = CheckedStringCchCopyEx(exact.Whole(), abc);
  EXPECT_EQ(exact.Text(), "abc");
  EXPECT_EQ(rest.position, exact.text.data() + 3);
  EXPECT_EQ(rest.units, 1u);
  EXPECT_EQ(CheckedStringCchCopyEx(rest, std::basic_string_view<TypeParam>()).units, 1u);

  Room<TypeParam> small(3);
  EXPECT_EQ(SystemErrorOf([&] { CheckedStringCchCopyEx(small.Whole(), abc); }), tooSmall + "CopyEx");
  EXPECT_EQ(small.Text(), "ab");
  EXPECT_EQ(SystemErrorOf([&] { CheckedStringCchPrintfEx(small.Whole(), "%02u%s", 7u, "x"); }), tooSmall + "PrintfEx");
  EXPECT_EQ(small.Text(), "07");

  Room<TypeParam> large(600 - 1);
  rest = CheckedStringCchPrintfEx(large.Whole(), "%s|%0550u", "x", 1u);
  EXPECT_EQ(large.Text(), "x|" + std::string(549, '0') + "1");
  EXPECT_EQ(rest.units, 599u - 552u);

  for (const std::size_t units : {std::size_t{0}, std::size_t{0x80000000}}) {
    EXPECT_EQ(SystemErrorOf([&] {
                CheckedStringCchCopyEx(BufferRest<TypeParam>{small.text.data(), units}, abc);
              }),
              invalid + "CopyEx");
  }
}

}  // namespace
}  // namespace Kestrel
