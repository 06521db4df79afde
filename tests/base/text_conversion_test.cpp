#include "base/text_conversion.h"

#include "fakes/fake_debugger.h"
#include "thrown.h"

namespace Kestrel {
namespace {

using namespace std::string_literals;

void ExpectBothWays(std::uint32_t codePage, const std::string& narrow, const std::u16string& wide) {
  const std::uint32_t widening = codePage == kUtf8CodePage ? 0 : kWidenFlags;
  const std::uint32_t narrowing = codePage == kUtf8CodePage ? 0 : kNarrowFlags;
  std::u16string wideTarget = u"before";
  std::string narrowTarget = "before";
  MultiToWide(wideTarget, codePage, widening, narrow.data(), static_cast<int>(narrow.size()));
  EXPECT_EQ(wideTarget, wide);
  WideToMulti(narrowTarget, codePage, narrowing, wide.data(), static_cast<int>(wide.size()));
  EXPECT_EQ(narrowTarget, narrow);
  MultiToWide(wideTarget, codePage, widening, narrow.c_str(), kNulTerminated);
  EXPECT_EQ(wideTarget, wide.c_str());
  WideToMulti(narrowTarget, codePage, narrowing, wide.c_str(), kNulTerminated);
  EXPECT_EQ(narrowTarget, narrow.c_str());
}

TEST(TextConversion, ConvertsBothWaysWithLengthAndWithTerminator) {
  ExpectBothWays(kUtf8CodePage, "T\xC3\xBCr \xE6\x9D\xB1 \xF0\x9F\x93\xB7", u"Tür 東 \U0001F4F7");
  ExpectBothWays(kUtf8CodePage, "a\0b"s, u"a\0b"s);
  ExpectBothWays(kAnsiCodePage, "\x80 \xFC", u"€ ü");
  // Lengths about which the way changes.
  std::string narrow;
  for (int length = 1; length < 300; ++length) {
    ExpectBothWays(kUtf8CodePage, narrow += "\xE6\x9D\xB1", std::u16string(static_cast<std::size_t>(length), u'東'));
  }
}

TEST(TextConversion, EmptiesTheTargetForNoText) {
  for (const auto& [source, length] : {std::pair<const char*, int>{nullptr, 5}, {"x", 0}, {"\0x", 2}, {"", -1}}) {
    std::u16string target = u"before";
    MultiToWide(target, kUtf8CodePage, 0, source, length);
    EXPECT_EQ(target, u"");
  }
  for (const auto& [source, length] :
       {std::pair<const char16_t*, int>{nullptr, 5}, {u"x", 0}, {u"\0x", 2}, {u"", -1}}) {
    std::string target = "before";
    WideToMulti(target, kUtf8CodePage, 0, source, length);
    EXPECT_EQ(target, "");
  }
  EXPECT_EQ(Utf8ToWide({}), u"");
}

TEST(TextConversion, ReplacesWhatHasNoCounterpart) {
  EXPECT_EQ(Utf8ToWide("a\xFF"
                       "b"),
            u"a\uFFFDb");
  EXPECT_EQ(WideToUtf8(u"a\xD83D"
                       u"b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(WideToAnsi(u"東"), "?");
}

TEST(TextConversion, KeepsTheRoomOfItsTarget) {
  std::u16string target(100, u'x');
  const char16_t* const room = target.data();
  MultiToWide(target, kUtf8CodePage, 0, "Camera front door 12", 20);
  EXPECT_EQ(target, u"Camera front door 12");
  EXPECT_EQ(target.data(), room);
}

TEST(TextConversion, RefusesWhatTheSystemRefuses) {
  std::u16string wide;
  std::string narrow;
  // Flags that no system knows; the number is the system's.
  EXPECT_TRUE(SystemErrorOf([&] {
                MultiToWide(wide, kUtf8CodePage, 0x40000000, "x", 1);
              }).ends_with("] in MultiByteToWideChar"));
  EXPECT_TRUE(SystemErrorOf([&] {
                MultiToWide(wide, kUtf8CodePage, 0x40000000, "x", -1);
              }).ends_with("] in MultiByteToWideChar"));
  EXPECT_TRUE(SystemErrorOf([&] { WideToMulti(narrow, 64999, 0, u"x", 1); }).ends_with("] in WideCharToMultiByte"));
  // One unit more than three bytes each can count; the source is not read.
  EXPECT_EQ(SystemErrorOf([&] { WideToMulti(narrow, kUtf8CodePage, 0, u"x", 715827883); }),
            "2/87 [ErrorCode #87] in WideCharToMultiByte");
}

TEST(ClipSizeT, TellsTheDebuggerWhatDoesNotFit) {
  fakes::ClearDebuggerLines();
  EXPECT_EQ(ClipSizeT(0xFFFFFFFF), 0xFFFFFFFFu);
  EXPECT_TRUE(fakes::DebuggerLines().empty());
  EXPECT_EQ(ClipSizeT(0x100000000), 0xFFFFFFFFu);
  EXPECT_EQ(fakes::DebuggerLines(), std::vector<std::u16string>{u"ClipSizeT failed - Size > MaxSize"});
}

}  // namespace
}  // namespace Kestrel
