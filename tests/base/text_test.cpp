/// What the base library does with texts: conversion, escapes, bounded rooms, GUIDs.
#include <cctype>
#include <cstdio>
#include <cstring>

#include "base/append_text.h"
#include "base/checked_string.h"
#include "base/guid.h"
#include "base/text_conversion.h"
#include "base/xml_escape.h"
#include "thrown.h"

namespace Kestrel {
namespace {

using namespace std::string_literals;

TEST(Guid, IsWrittenInLowerCaseAndReadWithAndWithoutBraces) {
  constexpr Guid kGuid = {0x6F9619FF, 0x8B86, 0xD011, {0xB4, 0x2D, 0x00, 0xCF, 0x4F, 0xC9, 0x64, 0xFF}};
  const std::string kText = "6f9619ff-8b86-d011-b42d-00cf4fc964ff";
  EXPECT_EQ(GuidToString(kGuid), kText);
  for (const std::string& text : {kText, "{" + kText + "}", "6F9619FF-8B86-D011-B42D-00CF4FC964FF"s}) {
    EXPECT_EQ(GuidFromString(text), kGuid) << text;
  }
  std::string hyphenMoved = kText;
  std::swap(hyphenMoved[13], hyphenMoved[14]);
  for (const std::string& text :
       {""s, "{" + kText, kText + "}", "{" + kText + ")", kText + "0", kText.substr(1), "g" + kText.substr(1),
        "\xFF" + kText.substr(1), kText.substr(0, 35) + "g", hyphenMoved}) {
    Guid guid = kGuid;
    EXPECT_FALSE(StringToGuid(text, guid)) << text;
    EXPECT_EQ(guid, kGuid) << text;
  }
  EXPECT_EQ(ErrorOf([] { GuidFromString("{x}"); }), "GuidConversionException: Conversion of guid '{x}' failed.");
}

TEST(Guid, HasTheDigitsThatPrintfWrites) {
  for (unsigned i = 0; i < 256; ++i) {
    std::uint8_t b[16];
    for (unsigned k = 0; k < 16; ++k) b[k] = static_cast<std::uint8_t>(i + k * 17);
    char text[37];
    std::snprintf(text, sizeof text, "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", b[3], b[2],
                  b[1], b[0], b[5], b[4], b[7], b[6], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
    Guid guid;
    std::memcpy(&guid, b, sizeof b);
    EXPECT_EQ(GuidToString(guid), text);
    char buffer[GuidTools::kGuidBufferBytes];
    std::memset(buffer, '#', sizeof buffer);
    GuidTools::GuidToStringCbA(buffer, guid);
    EXPECT_STREQ(buffer, text);
    EXPECT_EQ(GuidFromString(text), guid);
    for (const std::size_t column : {7u, 9u}) {  // a low and a high digit
      std::string changed = text;
      changed[column] = static_cast<char>(i);
      EXPECT_EQ(StringToGuid(changed, guid), i < 128 && std::isxdigit(static_cast<int>(i))) << changed;
    }
  }
}

TEST(AppendText, WritesValuesAsStreamsDo) {
  std::u16string text = u"kept ";
  const auto append = [&text](const auto&... values) { (AppendText(text, values), ...); };
  append("G\xE4\x7F", "\0\0\x80"s, u"\u0436", "s"s, u"w"s, 'c', u'\u20ac', -1, true, ~std::uint64_t{0},
         std::uint8_t{65});
  append(static_cast<const char*>(nullptr), static_cast<const char16_t*>(nullptr), static_cast<void*>(nullptr),
         reinterpret_cast<int*>(0xFEDCBA9876543210));
  EXPECT_EQ(text, u"kept Gä\u007F\0\0€\u0436swc€-1118446744073709551615650000000000000000FEDCBA9876543210"s);
}

TEST(XmlEscape, WritesEntitiesAndByteReferences) {
  EXPECT_EQ(XmlEscape("<a b='1'>\t&\"\xC3\x80\x7F\xFF"),
            "&lt;a b=&apos;1&apos;&gt;\t&amp;&quot;&#195;&#128;\x7F&#255;");
}

template <class Char>
void ExpectRoomsToBeKept() {
  const std::string context = "] in Kestrel::CheckedStringCch";
  const std::string tooSmall = "SystemException 2147942522 [ErrorCode #2147942522" + context;
  const std::basic_string<Char> abc = {'a', 'b', 'c', 0, 'd'};
  std::basic_string<Char> text(600, '#');
  const auto room = [&text](std::size_t units) { return BufferRest<Char>{text.data(), units}; };
  const auto copy = [&](std::size_t units) { return CheckedStringCchCopyEx(room(units), abc); };
  EXPECT_TRUE(copy(4).position == text.data() + 3 && copy(4).units == 1);
  EXPECT_EQ(text.substr(0, 5), (std::basic_string<Char>{'a', 'b', 'c', 0, '#'}));
  EXPECT_EQ(SystemErrorOf([&] { copy(3); }), tooSmall + "CopyEx");
  EXPECT_TRUE(text[1] == 'b' && text[2] == 0);
  EXPECT_EQ(SystemErrorOf([&] { copy(0); }), "SystemException 2147942487 [ErrorCode #2147942487" + context + "CopyEx");
  EXPECT_EQ(CheckedStringCchPrintfEx(room(599), "%s|%0550u", "x", 1u).units, 599u - 552u);
  EXPECT_TRUE(text[551] == '1' && text[552] == 0 && text[553] == '#');
  EXPECT_EQ(SystemErrorOf([&] { CheckedStringCchPrintfEx(room(3), "%02u%s", 7u, "x"); }), tooSmall + "PrintfEx");
}

TEST(CheckedString, StopsAtTheEndOfTheRoomAndThrows) {
  ExpectRoomsToBeKept<char>();
  ExpectRoomsToBeKept<char16_t>();
}

void ExpectBothWays(std::uint32_t codePage, const std::string& narrow, const std::u16string& wide) {
  const bool isUtf8 = codePage == platform::CP_UTF8;
  std::u16string wideTarget = u"before";
  std::string narrowTarget = "before";
  for (const int length : {static_cast<int>(narrow.size()), platform::kNulTerminated}) {
    MultiToWide(wideTarget, codePage, isUtf8 ? 0 : platform::MB_PRECOMPOSED, narrow.c_str(), length);
    EXPECT_EQ(wideTarget, length < 0 ? std::u16string(wide.c_str()) : wide);
  }
  for (const int length : {static_cast<int>(wide.size()), platform::kNulTerminated}) {
    WideToMulti(narrowTarget, codePage, isUtf8 ? 0 : platform::WC_COMPOSITECHECK, wide.c_str(), length);
    EXPECT_EQ(narrowTarget, length < 0 ? std::string(narrow.c_str()) : narrow);
  }
}

TEST(TextConversion, ConvertsBothWaysWithLengthAndWithTerminator) {
  ExpectBothWays(platform::CP_UTF8, "T\xC3\xBCr \xE6\x9D\xB1 \xF0\x9F\x93\xB7", u"Tür 東 \U0001F4F7");
  ExpectBothWays(platform::CP_UTF8, "a\0b"s, u"a\0b"s);
  ExpectBothWays(platform::CP_UTF8, "", u"");
  ExpectBothWays(platform::CP_ACP, "\x80 \xFC", u"€ ü");
  // Lengths on both sides of the bound at which the conversion takes another path.
  std::string narrow;
  for (std::size_t length = 1; length < 300; ++length) {
    ExpectBothWays(platform::CP_UTF8, narrow += "\xE6\x9D\xB1", std::u16string(length, u'東'));
  }
  // An invalid byte, a NUL, half a surrogate pair, and a letter that the code page lacks.
  EXPECT_EQ(Utf8ToWide("a\xFF-"), u"a\uFFFD-");
  EXPECT_EQ(Utf8ToWide("\0a"s), u"");
  EXPECT_EQ(WideToUtf8(u"a\xD83D-"), "a\xEF\xBF\xBD-");
  EXPECT_EQ(WideToAnsi(u"東"), "?");
}

TEST(TextConversion, KeepsTheTargetsRoomAndRefusesWhatTheSystemRefuses) {
  std::u16string wide(100, u'x');
  std::string narrow;
  const char16_t* const room = wide.data();
  MultiToWide(wide, platform::CP_UTF8, 0, "Camera front door 12", 20);
  EXPECT_TRUE(wide == u"Camera front door 12" && wide.data() == room);
  MultiToWide(wide, platform::CP_UTF8, 0, nullptr, 5);
  EXPECT_EQ(wide, u"");
  // Flags and a code page that no system knows; the error code differs between systems.
  for (const int length : {1, -1}) {
    const auto widen = [&] { MultiToWide(wide, platform::CP_UTF8, 0x40000000, "x", length); };
    const auto narrowDown = [&] { WideToMulti(narrow, 64999, 0, u"x", length); };
    EXPECT_TRUE(SystemErrorOf(widen).ends_with("] in MultiByteToWideChar"));
    EXPECT_TRUE(SystemErrorOf(narrowDown).ends_with("] in WideCharToMultiByte"));
  }
  // One unit more than an int can count at three bytes each; the source is not read.
  EXPECT_EQ(SystemErrorOf([&] { WideToMulti(narrow, platform::CP_UTF8, 0, u"x", 715827883); }),
            "SystemException 87 [ErrorCode #87] in WideCharToMultiByte");
}

}  // namespace
}  // namespace Kestrel
