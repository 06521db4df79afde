#include "valuelist/value_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "fakes/counting_allocator.h"
#include "thrown.h"
#include "valuelist/buffer_pool.h"

using namespace std::string_literals;

namespace Kestrel {
namespace {

/// Bytes of hexadecimal text; blanks count for nothing, and X is the record of a name.
std::string Hex(std::string digits) {
  for (std::size_t at; (at = digits.find('X')) != digits.npos;) digits.replace(at, 1, "0B 02000000 58 00");
  std::erase(digits, ' ');
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

std::string Encoded(const ValueList& list) {
  Buffer buffer;
  list.Write(buffer);
  return std::string(buffer.GetBytes().begin(), buffer.GetBytes().end());
}

ReferencePointer<Buffer> Holding(std::string_view bytes) {
  return CreateBuffer(bytes.data(), bytes.size());
}

const std::string kUnnamed = "56 4C 49 53  0B 01000000 00 ";
const std::string kOneX = kUnnamed + "01000000 X ";
const std::string kExample = kUnnamed +
                             "02000000 0B 04000000 434D4400 06 06000000"
                             "0B 0C000000 476574496E666F4279497000 0B 09000000 31302E302E302E3500";
constexpr char16_t kExampleText[] =
    u"VkxJUwsBAAAAAAIAAAALBAAAAENNRAAGBgAAAAsMAAAAR2V0SW5mb0J5SXAACwkAAAAxMC4wLjAu\r\nNQA=";
constexpr char kInvalidType[] = "VariantExceptions::VariantInvalidTypeException: VariantException";

TEST(ValueListWrite, GivesTheWireForm) {
  ValueList list, example;
  example.Add("CMD", 6u);
  example.Add("GetInfoByIp", "10.0.0.5");
  EXPECT_EQ(Encoded(example), Hex(kExample));
  EXPECT_EQ(example.ToText(), kExampleText);
  list.SetName("ab");
  list.Add("X", std::uint64_t{0xFFFFFFFFFFFFFFFE});
  list.Add("X", std::uint8_t{200});
  list.Add("", true);
  list.AddBinaryData("X", Holding("\x07"));
  list.AddBinaryData("X", nullptr);
  EXPECT_EQ(Encoded(list), Hex("56 4C 49 53  0B 03000000 61 62 00  05000000  X 08 FEFFFFFFFFFFFFFF  X 02 C8"
                               "0B 01000000 00  00 01  X 0D 01000000 07  X 0D 00000000"));
}

TEST(ValueListWrite, IntoABufferOfItsOwnValuesTakesThemAsTheyWere) {
  const std::string blob = Hex(kUnnamed + "02000000 X 0E 02000000 6162 X 0D 01000000 63");
  const auto buffer = Holding(blob);
  ValueList list;
  list.Read(*buffer);
  list.Write(*buffer);
  EXPECT_EQ(std::string(buffer->GetBytes().begin(), buffer->GetBytes().end()), blob + blob);
  ValueList shared;
  shared.AddVariant("X", Variant(BinaryData(buffer)));
  const std::string before = Encoded(shared);
  shared.Write(*buffer);
  EXPECT_EQ(std::string(buffer->GetBytes().begin(), buffer->GetBytes().end()), blob + blob + before);
}

TEST(ValueListWrite, LeavesTheBufferAsItWasWhereABlobIsUnreadable) {
  Variant blob = Variant::Create(vtBlobPtr);
  blob.FromString("blobptr 4000000000 4096");
  ValueList list;
  list.AddVariant("X", blob);
  const auto buffer = Holding("before");
  EXPECT_THROW(list.Write(*buffer), BufferException);
  EXPECT_LE(buffer->GetCapacity(), 65536U) << "no room for the size that a text claims";
  EXPECT_EQ(std::string(buffer->GetBytes().begin(), buffer->GetBytes().end()), "before");
}

TEST(ValueListRead, TakesEveryTypeAndWritesItBackAndRefusesEveryPrefix) {
  const std::string same =
      kUnnamed +
      "16000000 X 01 FF X 02 C8 X 03 41 X 04 FEFF X 05 FEFF X 06 FEFFFFFF X 07 FEFFFFFF"
      "X 08 FEFFFFFFFFFFFF7F X 09 00004040 X 0A 9A9999999999B93F X 0D 02000000 00 FF X 0E 02000000 00 FF"
      "X 0F 0102030405060708 X 10 0102030405060708 X 11 0000000000000000 X 12 000102030405060708090A0B0C0D0E0F"
      "X 13 FEFFFFFF";
  const std::string read = Hex(same +
                               "X 00 80 X 0B 04000000 61 00 62 FF X 0C 07000000 6100 6200 FFFF FF X 14 FEFFFFFFFFFFFFFF"
                               "0B 04000000 61 00 62 FF 02 07");
  const auto buffer = Holding(read + "rest");
  ValueList list;
  list.Read(*buffer);
  EXPECT_EQ(Encoded(list),
            Hex(same + "X 00 01 X 0B 04000000 61 00 62 00 X 0C 06000000 6100 6200 0000 X 08 FEFFFFFFFFFFFFFF"
                       "0B 04000000 61 00 62 00 02 07"));
  EXPECT_EQ(buffer->GetUnreadLength(), 4u);
  for (std::size_t n = 0; n < read.size(); ++n)
    EXPECT_EQ(ErrorOf([&] { ValueList().Read(*Holding(read.substr(0, n))); }), kTooFewBytes) << n;
}

TEST(ValueListRead, RefusesWhatIsNoList) {
  using Row = std::pair<std::string, std::string>;
  for (const Row& row : {Row("56 4C 49 54 0B 01000000 00 00000000", "ValueListException: Wrong value list identifier"),
                         Row("56 4C 49 53  15 00", kInvalidType), Row(kOneX + "15 00", kInvalidType),
                         Row("56 4C 49 53  0B 00000000  00000000", kTooFewBytes),
                         Row(kOneX + "0B 00000000 00", kTooFewBytes), Row(kOneX + "0C 01000000 0000", kTooFewBytes),
                         Row(kOneX + "11 0800000000000000", "BufferException: invalid pointer request")})
    EXPECT_EQ(ErrorOf([&] { ValueList().Read(*Holding(Hex(row.first))); }), row.second) << row.first;
}

TEST(ValueListRead, MakesNoRoomForWhatAFalseCountClaims) {
  const std::string bytes = Hex(kUnnamed + "FFFFFFFF 15") + std::string(1 << 20, '\x15');
  const auto buffer = Holding(bytes);
  fakes::ResetHeapPeak();
  const std::int64_t before = fakes::GetHeapUse().peak;
  EXPECT_EQ(ErrorOf([&] { ValueList().Read(*buffer); }), kInvalidType);
  EXPECT_LE(fakes::GetHeapUse().peak - before, static_cast<std::int64_t>(bytes.size()) + 1024);
}

TEST(ValueListGet, TakesTheFirstOfANameAndLeavesTheOutputWithoutOne) {
  ValueList list;
  list.Add("nn", 1u);
  list.Add("n", "42");
  list.Add("n", 7u);
  list.AddBinaryData("b", Holding("ab"));
  std::uint32_t number = 9;
  EXPECT_FALSE(list.Get("N", number) || list.Get("", number) || list.Get("nnn", number) || number != 9);
  EXPECT_TRUE(list.Get("n", number) && number == 42);
  std::uint8_t byte = 0;
  std::uint64_t wide = 0;
  bool truth = false;
  list.Add("t", "1");
  for (const char* const name : {"n", "none"}) {
    list.Get(name, byte);
    list.Get(name, wide);
    list.Get(name == "n"s ? "t" : name, truth);
    EXPECT_TRUE(byte == 42 && wide == 42 && truth) << name;
  }
  list.Read(*Holding(Hex("56 4C 49 53  06 0A000000  01000000  07 FFFFFFFF  02 07")));  // appends, with any type of name
  EXPECT_TRUE(list.GetName() == "10" && list.Get("-1", number) && number == 7 && list.GetEntries().size() == 6);
  const auto untouched = Holding("x");
  ReferencePointer<Buffer> out = untouched;
  list.GetBinaryData("x", out);
  EXPECT_EQ(out, untouched);
  list.GetBinaryData("b", out);
  EXPECT_EQ(out, list.Find("b")->GetIf<BinaryData>()->GetBuffer());
  EXPECT_TRUE(std::ranges::equal(out->GetBytes(), std::string_view("ab")));
  list.GetBinaryData("n", out);
  EXPECT_FALSE(out);
  list.Clear();
  EXPECT_TRUE(list.GetName() == "10" && list.GetEntries().empty());
}

TEST(WideString, IsReadFromARecordOfAnyType) {
  // a record, what follows it, and the text or the error
  for (const auto& [record, unread, text, error] :
       {std::tuple("0C 06000000 6100 6200 FFFF"s, 0u, u"ab"s, ""s),
        std::tuple("0C 07000000 6100 6200 0000 FF"s, 0u, u"ab"s, ""s),
        std::tuple("0C 02000000 0000 FF"s, 1u, u""s, ""s),
        std::tuple("0C 01000000 0000"s, 2u, u"before"s, std::string(kTooFewBytes)),
        std::tuple("0C 04000000 6100 00"s, 3u, u"before"s, std::string(kTooFewBytes)),
        std::tuple("0B 03000000 C3A4 00"s, 0u, u"\u00E4"s, ""s), std::tuple("06 2A000000"s, 0u, u"42"s, ""s),
        std::tuple("15 00"s, 1u, u"before"s, std::string(kInvalidType))}) {
    SCOPED_TRACE(record);
    const auto buffer = Holding(Hex(record));
    std::u16string read = u"before";
    EXPECT_EQ(ErrorOf([&] { ReadWideString(*buffer, read); }), error);
    EXPECT_EQ(read, text);
    EXPECT_EQ(buffer->GetUnreadLength(), unread);
  }
}

TEST(ValueListFromText, ReadsWhatStandsBeforeTheFirstForeignCharacter) {
  const std::u16string text = kExampleText;
  const std::string empty = kUnnamed + "00000000", first = kUnnamed + "01000000 0B 04000000 434D4400 06 06000000";
  // a text, the error, and what the list holds then
  for (const auto& [units, error, binary] :
       {std::tuple(u'\0' + text, ""s, empty), std::tuple(text.substr(0, text.size() - 1) + u"!\u20AC", ""s, kExample),
        std::tuple(u"\u20AC" + text, std::string(kTooFewBytes), empty),
        std::tuple(text.substr(0, 60), std::string(kTooFewBytes), first)}) {
    ValueList list;
    list.Add("old", 1u);
    EXPECT_EQ(ErrorOf([&list, &units = units] { list.FromText(units); }), error);
    EXPECT_EQ(Encoded(list), Hex(binary));
  }
}

}  // namespace
}  // namespace Kestrel
