#include "valuelist/value_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "fakes/counting_allocator.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/error_of.h"

namespace Kestrel {
namespace {

/// Bytes of hexadecimal text; blanks count for nothing.
std::string Hex(std::string digits) {
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
const std::string kOneX = kUnnamed + "01000000  0B 02000000 58 00 ";
const std::string kExample =
    "56 4C 49 53 0B 01 00 00 00 00 02 00 00 00 0B 04"
    "00 00 00 43 4D 44 00 06 06 00 00 00 0B 0C 00 00"
    "00 47 65 74 49 6E 66 6F 42 79 49 70 00 0B 09 00"
    "00 00 31 30 2E 30 2E 30 2E 35 00";
constexpr char16_t kExampleText[] =
    u"VkxJUwsBAAAAAAIAAAALBAAAAENNRAAGBgAAAAsMAAAAR2V0SW5mb0J5SXAACwkAAAAxMC4wLjAu\r\n"
    u"NQA=";
constexpr char kInvalidType[] = "VariantExceptions::VariantInvalidTypeException: VariantException";

template <class T>
concept Addable = requires(ValueList list, T value) {
  list.Add("X", value);
};
static_assert(Addable<bool> && Addable<std::uint8_t> && Addable<std::uint32_t> && Addable<std::uint64_t>);
static_assert(!Addable<int> && !Addable<char> && !Addable<double> && !Addable<void*>,
              "no silent choice of a wire type");

TEST(ValueListWrite, GivesTheWireForm) {
  ValueList list, example;
  EXPECT_EQ(Encoded(list), Hex("56 4C 49 53 0B 01 00 00 00 00 00 00 00 00"));
  example.Add("CMD", 6u);
  example.Add("GetInfoByIp", "10.0.0.5");
  EXPECT_EQ(Encoded(example), Hex(kExample));
  EXPECT_EQ(example.ToText(), kExampleText);

  list.SetName("ab");
  list.Add("X", std::uint64_t{0xFFFFFFFFFFFFFFFE});
  list.Add("X", std::uint8_t{200});
  list.Add("", true);
  list.AddBinaryData("B", Holding("\x07"));
  list.AddBinaryData("N", nullptr);
  EXPECT_EQ(Encoded(list), Hex("56 4C 49 53  0B 03000000 61 62 00  05000000"
                               "0B 02000000 58 00  08 FEFFFFFFFFFFFFFF  0B 02000000 58 00  02 C8  0B 01000000 00  00 01"
                               "0B 02000000 42 00  0D 01000000 07       0B 02000000 4E 00  0D 00000000"));
}

TEST(ValueListRead, TakesEveryTypeAndWritesItBack) {
  std::map<std::string, std::string> writtenForRead = {
      {"0B 03000000 61 00 FF", "0B 03000000 61 00 00"},
      {"0C 07000000 6100 6200 FFFF FF", "0C 06000000 6100 6200 0000"},
      {"14 FEFFFFFFFFFFFFFF", "08 FEFFFFFFFFFFFFFF"},
  };
  for (const char* const same :
       {"00 01", "01 FF", "02 C8", "03 41", "04 FEFF", "05 FEFF", "06 FEFFFFFF", "07 FEFFFFFF", "08 FEFFFFFFFFFFFF7F",
        "09 00004040", "0A 9A9999999999B93F", "0D 02000000 00 FF", "0E 02000000 00 FF", "0F 0102030405060708",
        "10 0102030405060708", "11 0000000000000000", "12 000102030405060708090A0B0C0D0E0F", "13 FEFFFFFF"})
    writtenForRead.emplace(same, same);
  EXPECT_EQ(writtenForRead.size(), kVariantTypeCount);
  for (const auto& [read, written] : writtenForRead) {
    const auto buffer = Holding(Hex(kOneX + read) + "rest");
    ValueList list;
    list.Read(*buffer);
    EXPECT_EQ(Encoded(list), Hex(kOneX + written)) << read;
    EXPECT_EQ(buffer->GetUnreadLength(), 4u) << read;
  }
}

TEST(ValueListRead, TakesNamesOfAnyTypeAndAppends) {
  ValueList list;
  list.Add("first", 1u);
  list.Read(*Holding(Hex("56 4C 49 53  06 0A000000  02000000  07 FFFFFFFF 02 01  0C 04000000 E400 0000 02 02")));
  EXPECT_EQ(list.GetName(), "10");
  const std::string names[] = {"first", "-1", "\u00E4"};
  EXPECT_TRUE(std::ranges::equal(list.GetEntries(), names, {}, &ValueListEntry::name));
}

TEST(ValueListRead, RefusesWhatIsNoList) {
  const std::pair<std::string, const char*> rows[] = {
      {"56 4C 49 54 0B 01000000 00 00000000", "ValueListException: Wrong value list identifier"},
      {"56 4C 49 53  15 00", kInvalidType},
      {kUnnamed + "01000000  15 00  02 01", kInvalidType},
      {kOneX + "15 00", kInvalidType},
      {"56 4C 49 53  0B 00000000  00000000", kTooFewBytes},
      {kUnnamed + "01000000  0B 00000000  02 01", kTooFewBytes},
      {kOneX + "0B 00000000 00", kTooFewBytes},
      {kOneX + "0C 01000000 0000", kTooFewBytes},
      {kOneX + "0D FFFFFFFF 00", kTooFewBytes},
      {kOneX + "11 0800000000000000", "BufferException: invalid pointer request"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ErrorOf([&] { ValueList().Read(*Holding(Hex(row.first))); }), row.second) << row.first;
}

TEST(ValueListRead, RefusesEveryPrefixAndKeepsWholeEntries) {
  const std::string whole = Hex(kExample);
  for (std::size_t n = 0; n < whole.size(); ++n) {
    ValueList list;
    EXPECT_EQ(ErrorOf([&] { list.Read(*Holding(whole.substr(0, n))); }), kTooFewBytes) << n;
    EXPECT_EQ(list.GetEntries().size(), n < 28 ? 0u : 1u) << n;
  }
}

TEST(ValueListRead, HoldsNoMoreThanTheBytesJustify) {
  for (const std::string digits : {"02 01 02 02", "02 01 0D 00000000", "02 01 0D 01000000 07"}) {
    const std::string entry = Hex(digits);
    for (const std::string count : {"A0860100", "FFFFFFFF"}) {  // 100,000, and more than there are
      std::string bytes = Hex(kUnnamed + count);
      for (int i = 0; i < 100'000; ++i) bytes += entry;
      const auto buffer = Holding(bytes);
      fakes::ResetHeapPeak();
      const std::int64_t before = fakes::GetHeapUse().bytes;
      ValueList list;
      EXPECT_EQ(ErrorOf([&] { list.Read(*buffer); }), count == "FFFFFFFF" ? kTooFewBytes : "");
      EXPECT_LT((fakes::GetHeapUse().peak - before) / static_cast<std::int64_t>(bytes.size()), 32) << digits;
    }
  }
}

TEST(ValueListGet, TakesTheFirstOfANameAndLeavesTheOutputWithoutOne) {
  ValueList list;
  list.Add("n", "42");
  list.Add("n", 7u);
  list.AddBinaryData("b", Holding("ab"));
  std::uint32_t number = 9;
  EXPECT_FALSE(list.Get("N", number) || list.Get("nn", number) || list.Get("", number) || number != 9);
  EXPECT_TRUE(list.Get("n", number) && number == 42);

  const auto untouched = Holding("x");
  ReferencePointer<Buffer> out = untouched, again;
  list.GetBinaryData("x", out);
  EXPECT_EQ(out, untouched);
  list.GetBinaryData("b", out);
  list.GetBinaryData("b", again);
  EXPECT_EQ(out, again);
  EXPECT_TRUE(std::ranges::equal(out->GetBytes(), std::string_view("ab")));
  list.GetBinaryData("n", out);
  EXPECT_FALSE(out || list.FindBinaryData("n"));
}

TEST(ValueListFromText, ReadsWhatStandsBeforeTheFirstForeignCharacter) {
  struct Row {
    std::u16string text;
    std::string error, binary;  ///< binary: what the list holds then
  };
  const std::u16string text = kExampleText;
  const std::string empty = kUnnamed + "00000000", first = kUnnamed + "01000000 0B 04000000 434D4400 06 06000000";
  for (const Row& row : std::vector<Row>{
           {text, "", kExample},
           {u"", "", empty},
           {u'\0' + text, "", empty},
           {text.substr(0, text.size() - 1) + u"!\u20AC", "", kExample},
           {u"\u20AC" + text, kTooFewBytes, empty},
           {text.substr(0, 60), kTooFewBytes, first},
           {u"VkxJUwsBAAAAAAEAAAACAQ4DAAAAYWJj", "", kUnnamed + "01000000 0B 02000000 31 00 0E 03000000 61 62 63"},
       }) {
    ValueList list;
    list.Add("old", 1u);
    EXPECT_EQ(ErrorOf([&] { list.FromText(row.text); }), row.error);
    EXPECT_EQ(Encoded(list), Hex(row.binary));
  }
}

TEST(ReadWideString, TakesEveryType) {
  struct Row {
    std::string record;
    std::u16string text;
    const char* error = "";
  };
  for (const Row& row : std::vector<Row>{{"0C 06000000 6100 AC20 FFFF", u"a\u20AC"},
                                         {"0C 05000000 6100 0000 00", u"a"},
                                         {"0C 02000000 0000", u""},
                                         {"0B 04000000 C3A4 62 00", u"\u00E4b"},
                                         {"06 0A000000", u"10"},
                                         {"0C 01000000 00", u"old", kTooFewBytes},
                                         {"0C 00000000", u"old", kTooFewBytes},
                                         {"0C FEFFFFFF 6100", u"old", kTooFewBytes},
                                         {"15", u"old", kInvalidType},
                                         {"", u"old", kTooFewBytes}}) {
    std::u16string text = u"old";
    EXPECT_EQ(ErrorOf([&] { ReadWideString(*Holding(Hex(row.record)), text); }), row.error);
    EXPECT_EQ(text, row.text);
  }
}

}  // namespace
}  // namespace Kestrel
