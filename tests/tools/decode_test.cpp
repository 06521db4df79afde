/// Messages as trees, dumps and JSON, and back.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "tools/decode/hex_text.h"
#include "tools/decode/input.h"
#include "tools/decode/message_json.h"
#include "tools/decode/views.h"
#include "tools/failure.h"

namespace tarnfind {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Json = nlohmann::ordered_json;

Bytes Sample(const std::string& name) {
  std::ifstream file(TARN_TEST_DATA "/" + name, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

struct StringOutput final : TextOutput {
  void Write(std::string_view part) override { text += part; }
  std::string text;
};

std::string TreeOf(const Bytes& bytes, FormAndType what) {
  StringOutput output;
  WriteTree(Decode(bytes, what), {}, output);
  return output.text;
}

Form FormOfSample(const std::string& name) {
  return name.starts_with("block") ? Form::kBlock : name.starts_with("reply") ? Form::kReply : Form::kRequest;
}

/// Every sample, as what its name says and as everything else, whole and cut: the bytes come back.
TEST(Decode, EncodingGivesTheBytesOfEverySampleAgain) {
  int samples = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TARN_TEST_DATA)) {
    if (entry.path().extension() != ".bin") continue;
    SCOPED_TRACE(entry.path().filename());
    Bytes bytes = Sample(entry.path().filename().string());
    if (bytes.size() > 20'000) bytes.resize(20'000);
    for (const Form form : {Form::kRequest, Form::kReply, Form::kBlock, Form::kList, Form::kFrame})
      EXPECT_EQ(Encode(ToJson(Decode(bytes, {form, 0}))), bytes);
    for (std::uint32_t type = 1; type <= 9; ++type)
      EXPECT_EQ(Encode(ToJson(Decode(bytes, {Form::kBlock, type}))), bytes);
    for (std::size_t n = 0; n < bytes.size(); n += 1 + bytes.size() / 40) {
      const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
      EXPECT_EQ(Encode(ToJson(Decode(cut, {FormOfSample(entry.path().filename().string()), 3}))), cut);
    }
    ++samples;
  }
  EXPECT_GE(samples, 30);
}

bool HasBytes(const Json& node) {
  if (node.contains("bytes")) return true;
  for (const Json& item : node.value("items", Json::array()))
    if (HasBytes(item)) return true;
  return false;
}

/// An entry of a type with a random value, and its bytes made here.
std::pair<Json, Bytes> RandomEntry(std::mt19937& random, std::uint8_t tag) {
  constexpr const char* kNames[] = {
      "vtBool",    "vtChar",       "vtUChar",   "vtSChar",    "vtShort",    "vtUShort",
      "vtUInt",    "vtInt",        "vtInt64",   "vtFloat",    "vtDouble",   "vtString",
      "vtWString", "vtBinaryData", "vtBlobPtr", "vtFileTime", "vtDateTime", "vtReferencePointer",
      "vtGuid",    "vtLong",       "vtUInt64"};
  constexpr int kSizes[] = {1, 1, 1, 1, 2, 2, 4, 4, 8, 4, 8, 0, 0, 0, 0, 8, 8, 8, 16, 4, 8};
  constexpr bool kSigned[] = {false, true,  false, true,  true,  false, false, true,  true, false, false,
                              false, false, false, false, false, false, false, false, true, false};
  Bytes payload(kSizes[tag] ? kSizes[tag] : random() % 9);
  for (std::uint8_t& byte : payload) byte = static_cast<std::uint8_t>(random());
  Json value = HexText(payload);
  Bytes record = {0x0B, 2, 0, 0, 0, 'k', 0, tag};
  if (tag == 0) value = (payload[0] &= 1) != 0;
  if (tag == 9 || tag == 10) {
    const float number = static_cast<float>(static_cast<int>(random() % 100'000)) / 8;
    const double wide = number;
    std::memcpy(payload.data(), tag == 9 ? static_cast<const void*>(&number) : &wide, payload.size());
    value = wide;
  } else if (tag == 11 || tag == 12) {
    for (std::uint8_t& byte : payload) byte = static_cast<std::uint8_t>('a' + byte % 26);
    value = std::string(payload.begin(), payload.end());
    if (tag == 12)
      for (std::size_t i = payload.size(); i-- > 0;)
        payload.insert(payload.begin() + static_cast<std::ptrdiff_t>(i) + 1, 0);
    payload.insert(payload.end(), tag == 12 ? 2 : 1, 0);
  } else if (kSizes[tag] > 1 || (tag > 0 && tag < 4)) {
    std::uint64_t number = 0;
    if (tag != 18) {
      std::memcpy(&number, payload.data(), payload.size());
      const int shift = 64 - 8 * static_cast<int>(payload.size());
      value = number;
      if (kSigned[tag]) value = static_cast<std::int64_t>(number << shift) >> shift;
    }
  }
  if (kSizes[tag] == 0) record.insert(record.end(), {static_cast<std::uint8_t>(payload.size()), 0, 0, 0});
  record.insert(record.end(), payload.begin(), payload.end());
  return {{{"type", kNames[tag]}, {"name", "k"}, {"value", value}}, record};
}

TEST(Encode, MakesRandomValuesAndDecodingGivesThemBack) {
  std::mt19937 random(20261125);
  for (int round = 0; round < 300; ++round) {
    const auto count = static_cast<std::uint8_t>(random() % 6);
    Json list = {{"type", "list"}, {"name", "n"}, {"items", Json::array()}};
    Bytes bytes = {'V', 'L', 'I', 'S', 0x0B, 2, 0, 0, 0, 'n', 0, count, 0, 0, 0};
    for (int i = 0; i < count; ++i) {
      const auto [entry, record] = RandomEntry(random, static_cast<std::uint8_t>(random() % 21));
      list["items"].push_back(entry);
      bytes.insert(bytes.end(), record.begin(), record.end());
    }
    ASSERT_EQ(Encode(list), bytes);
    const Json decoded = ToJson(Decode(bytes, {Form::kList, 0}));
    ASSERT_FALSE(HasBytes(decoded)) << decoded;
    for (int i = 0; i < count; ++i) {
      const Json& entry = decoded["items"][static_cast<std::size_t>(i)];
      ASSERT_EQ(entry["type"], list["items"][static_cast<std::size_t>(i)]["type"]);
      ASSERT_EQ(entry["value"], list["items"][static_cast<std::size_t>(i)]["value"]);
    }
  }
}

TEST(Decode, ShowsEachValueWithItsMeaning) {
  EXPECT_EQ(TreeOf(Sample("request-info-by-ip.bin"), {Form::kRequest, 0}),
            "request 33802  — a command to the camera finder\n"
            "  base64-utf16\n"
            "    list\n"
            "      CMD vtUInt 6  — asks about the camera at an address\n"
            "      GetInfoByIp vtString \"10.0.0.5\"  — the address asked about\n");
}

TEST(Decode, DumpsEachByteWithItsMeaning) {
  StringOutput output;
  WriteDump(Decode({0x0C, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0}, {Form::kBlock, 8}), output);
  const std::string blank(60, ' ');
  EXPECT_EQ(output.text,
            blank + "block: a pushed block, message type 8: a camera known by its address alone, event kind 4\n" +
                blank +
                "  chunk: CTT code, handed on unread\n"
                "  000000  0c 00 00 00                                           tag 12\n"
                "  000004  01 00 00 00 00 00 00 00                               length 1\n" +
                blank +
                "    vtUChar\n"
                "  00000c  07                                                      CTT 7\n" +
                blank +
                "  end: end of the block\n"
                "  00000d  00 00 00 00                                           tag 0\n");
}

struct DamageRow {
  const char* name;
  Form form;
  Bytes bytes;
  const char* tree;  ///< the last lines
};
class DamagedMessage : public testing::TestWithParam<DamageRow> {};

TEST_P(DamagedMessage, IsShownUpToTheDamageWithWhatStoodThere) {
  const std::string tree = TreeOf(GetParam().bytes, {GetParam().form, 0});
  EXPECT_NE(tree.find(GetParam().tree), std::string::npos) << tree;
}

const Bytes kEmptyList = {'V', 'L', 'I', 'S', 0x0B, 1, 0, 0, 0, 0, 1, 0, 0, 0};
Bytes ListWith(Bytes more) {
  more.insert(more.begin(), kEmptyList.begin(), kEmptyList.end());
  return more;
}

Bytes CutReply() {
  const std::string bytes = std::string("\x0B\xFF\0\0\0", 5) + "VkxJUwsBAAAAAAEAAAA=";  // kEmptyList
  return Bytes(bytes.begin(), bytes.end());
}

INSTANTIATE_TEST_SUITE_P(
    Table, DamagedMessage,
    testing::Values(
        DamageRow{"NoIdentifier",
                  Form::kList,
                  {'V', 'L', 'I', 'T'},
                  "!! damage at offset 0: expected \"VLIS\", found 564c4954\n"},
        DamageRow{"CutIdentifier", Form::kList, {'V', 'L'}, "expected identifier \"VLIS\", 4 bytes, found 2 bytes\n"},
        DamageRow{"MissingEntry", Form::kList, kEmptyList,
                  "!! damage at offset 14: expected entry 1 of 1, found the end\n"},
        DamageRow{"UnknownType", Form::kList, ListWith({0x0B, 2, 0, 0, 0, 'k', 0, 21, 9}),
                  "!! damage at offset 22: expected a type below 21, found type 21\n"},
        DamageRow{"CutValue", Form::kList, ListWith({0x0B, 2, 0, 0, 0, 'k', 0, 6, 1, 2}),
                  "!! damage at offset 22: expected vtUInt of 4 bytes, found 2 bytes\n  rest 2 bytes  — not read\n"},
        DamageRow{"TextWithoutTerminator", Form::kList, ListWith({0x0B, 0, 0, 0, 0}),
                  "expected room for a terminator, found length 0\n"},
        DamageRow{"WrongCode", Form::kRequest, {1, 2, 3, 4}, "expected the code 0x840a, found 0x4030201\n"},
        DamageRow{"NoText", Form::kReply, {6, 1, 0, 0, 0}, "expected a text, type 12 or 11, found type 6\n"},
        DamageRow{"CutReply", Form::kReply, CutReply(),
                  "    list\n      !! damage at offset 14: expected entry 1 of 1, found the end\n"
                  "  !! damage at offset 25: expected a text of 255 bytes, found 20 bytes\n"},
        DamageRow{
            "CutChunk", Form::kBlock, {6, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 1}, "expected 9 bytes, found 1 byte\n"},
        DamageRow{"WrongElementSize",
                  Form::kBlock,
                  {7, 0, 0, 0, 16, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0},
                  "expected elements of 8 bytes, found elements of 4\n"}),
    [](const auto& row) { return row.param.name; });

/// Binary data in binary data, deeper than anybody looks.
TEST(Decode, DeepNestingEndsInBytes) {
  Bytes inner = kEmptyList;
  for (int i = 0; i < 2000; ++i) {
    Bytes outer = {'V', 'L', 'I', 'S', 0x0B, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0x0B, 1, 0, 0, 0, 0, 0x0D};
    const auto size = static_cast<std::uint32_t>(inner.size() + 8);
    for (int shift = 0; shift < 32; shift += 8) outer.push_back(static_cast<std::uint8_t>(size >> shift));
    outer.insert(outer.end(), {0xFF, 0x45, 0x43, 0x42, 1, 0, 0, 0});
    outer.insert(outer.end(), inner.begin(), inner.end());
    inner = std::move(outer);
  }
  EXPECT_EQ(Encode(ToJson(Decode(inner, {Form::kList, 0}))), inner);
}

struct InputRow {
  const char* name;
  std::string input;
  Form form;
};
class RecognisedInput : public testing::TestWithParam<InputRow> {};

TEST_P(RecognisedInput, IsTakenForWhatItIs) {
  const std::string& input = GetParam().input;
  EXPECT_EQ(Recognise(Bytes(input.begin(), input.end()), "").what.form, GetParam().form);
}

using namespace std::string_literals;
INSTANTIATE_TEST_SUITE_P(
    Table, RecognisedInput,
    testing::Values(
        InputRow{"List", "VLIS\x0B"s, Form::kList}, InputRow{"Request", "\x0A\x84\0\0V\0"s, Form::kRequest},
        InputRow{"Reply", "\x0B\x05\0\0\0Vkxx\0"s, Form::kReply},
        InputRow{"CutReply", "\x0C\xFF\xFF\0\0V\0k\0"s, Form::kReply},
        InputRow{"Block", "\x0C\0\0\0\x01\0\0\0\0\0\0\0\x07"s, Form::kBlock},
        InputRow{"CutBlock", "\x03\0\0\0\xFF\0\0\0\0\0\0\0VLIS"s, Form::kBlock},
        InputRow{"Frame", "\x01\x30\x01"s + std::string(45, '\0'), Form::kFrame},
        InputRow{"HexDigits", "0A 84 00 00\r\n56,00"s, Form::kRequest},
        InputRow{"DumpOfXxd", "00000000: 0a84 0000 5600                           ....V.\n"s, Form::kRequest},
        InputRow{"DumpOfXxdInNarrowLines",
                 "00000000: 0a84 0000 5600 6b00  ....V.k.\n00000008: 7800                 x.\n"s, Form::kRequest},
        InputRow{"DumpOfHexdump",
                 "0000000 840a 0000 0056 0000 0000 0000 0000 0000\n0000010 0000 0000 0000 0000 0000 0000 "
                 "0000 0000\n*\n0000040 0056\n0000041\n"s,
                 Form::kRequest},
        InputRow{"DumpOfCanonicalHexdump",
                 "00000000  0a 84 00 00 56 00 6b 00  78 00 4a 00 55 00 77 00  |....V.k.x.J.U.w.|\n"
                 "00000010  73 00                                             |s.|\n00000012\n"s,
                 Form::kRequest},
        InputRow{"Base64OfARequest", "CoQAAFYAawA="s, Form::kRequest},
        InputRow{"Base64", " VkxJUwsBAAAAAAAAAAA=\n"s, Form::kList},
        InputRow{"Utf16", "V\0k\0x\0J\0U\0w\0s\0B\0A\0A\0A\0A\0A\0A\0A\0A\0A\0A\0A\0=\0"s, Form::kList},
        InputRow{"Utf16WithMark",
                 "\xFF\xFE"s + "5\0"
                               "6\0"
                               "4\0"
                               "c\0"
                               "4\0"
                               "9\0"
                               "5\0"
                               "3\0"s,
                 Form::kList}),
    [](const auto& row) { return row.param.name; });

TEST(RecognisedInput, AnythingElseIsRefused) {
  for (const std::string text : {"", "hello", "\x00\x00\x00\x00\x00"})
    EXPECT_THROW(Recognise(Bytes(text.begin(), text.end()), ""), WrongUse) << text;
}

struct EncodeRow {
  const char* json;
  const char* error;
};
TEST(Encode, WhatIsNoMessageIsRefusedWithWhereAndWhy) {
  constexpr EncodeRow kRows[] = {
      {R"([])", "the message must be an object"},
      {R"({})", "the message has no \"type\""},
      {R"({"type":"lisst"})", "the message has the unknown type \"lisst\""},
      {R"({"type":"list","items":[{"type":"vtUInt","name":"CMD","value":4294967296}]})",
       "the message.items[0] \"value\" must be a whole number of at most 32 bits"},
      {R"({"type":"list","items":[{"type":"vtChar","name":"k","value":-129}]})",
       "the message.items[0] \"value\" must be a whole number of at most 8 bits"},
      {R"({"type":"raw","value":"0x"})", "the message \"value\" must be pairs of hexadecimal digits"},
      {R"({"type":"frame","value":"00"})", "the message \"value\" must be a header of 48 bytes"},
  };
  for (const EncodeRow& row : kRows) {
    try {
      Encode(Json::parse(row.json));
      ADD_FAILURE() << row.json;
    } catch (const EncodeError& error) {
      EXPECT_STREQ(error.what(), row.error);
    }
  }
}

}  // namespace
}  // namespace tarnfind
