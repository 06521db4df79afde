#include "protocol/record_wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <utility>

#include "base/exceptions.h"
#include "protocol/samples.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

using Kestrel::BinaryData;
using Kestrel::ValueList;
using Kestrel::Variant;
using Texts = std::vector<std::string>;

Variant Binary(const Bytes& bytes) {
  return Variant(BinaryData(Kestrel::CreateBuffer(bytes.data(), bytes.size())));
}

Bytes Concat(std::initializer_list<Bytes> pieces) {
  Bytes all;
  for (const Bytes& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
  return all;
}

const Bytes kMarker = {0xFF, 0x45, 0x43, 0x42};
const Bytes kElementA = {'V', 'L', 'I', 'S', 0x0B, 1,   0,   0, 0,    0, 1, 0, 0, 0,   0x0B,
                         4,   0,   0,   0,   'm',  'a', 'c', 0, 0x0B, 2, 0, 0, 0, 'a', 0};
const Bytes kElementWithoutMac = {'V', 'L', 'I', 'S', 0x0B, 1, 0, 0, 0, 0, 0, 0, 0, 0};

TEST(StringList, IsWrittenBehindMarkerAndCount) {
  const struct {
    Texts texts;
    Bytes block;
  } rows[] = {{{}, Concat({kMarker, {0, 0, 0, 0}})},
              {{"a", "a"}, Concat({kMarker, {2, 0, 0, 0}, kElementA, kElementA})}};
  for (const auto& row : rows) {
    ValueList list;
    WriteStringList(list, "NI2", row.texts);
    const auto block = list.FindBinaryData("NI2").value();
    EXPECT_EQ(Bytes(block.begin(), block.end()), row.block);
    Texts texts = {"before"};
    ReadStringList(list, "NI2", texts);
    EXPECT_EQ(texts.size(), row.texts.size() + 1);
    EXPECT_EQ(texts.back(), row.texts.empty() ? "before" : "a");
  }
}

struct ListBlockCase {
  const char* name;
  Variant value;
  Texts texts;              ///< what stands in the list afterwards
  std::string_view thrown;  ///< empty: nothing
};
class StringListBlock : public testing::TestWithParam<ListBlockCase> {};

TEST_P(StringListBlock, IsReadIgnoredOrRefused) {
  ValueList list;
  list.AddVariant("PLN", GetParam().value);
  Texts texts;
  std::string thrown;
  try {
    ReadStringList(list, "PLN", texts);
    ReadStringList(list, "absent", texts);
  } catch (const Kestrel::KestrelException& exception) {
    thrown = exception.GetDescription();
  }
  EXPECT_EQ(thrown, GetParam().thrown);
  EXPECT_EQ(texts, GetParam().texts);
}

constexpr std::string_view kCut = "read failed - not enough bytes in buffer";

INSTANTIATE_TEST_SUITE_P(
    , StringListBlock,
    testing::ValuesIn(std::vector<ListBlockCase>{
        {"NotBinary", Variant("text"), {}, ""},
        {"WithoutBytes", Variant(BinaryData()), {}, ""},
        {"MarkerAlone", Binary(kMarker), {}, ""},
        {"WrongMarker", Binary(Concat({{0xFE, 0x45, 0x43, 0x42, 1, 0, 0, 0}, kElementA})), {}, ""},
        {"CutInCount", Binary(Concat({kMarker, {1}})), {}, kCut},
        {"ElementWithoutMac", Binary(Concat({kMarker, {1, 0, 0, 0}, kElementWithoutMac})), {""}, ""},
        {"BytesBehind", Binary(Concat({kMarker, {1, 0, 0, 0}, kElementA, {0}})), {"a"}, ""},
        {"CountTooLarge", Binary(Concat({kMarker, {0xFF, 0xFF, 0xFF, 0xFF}, kElementA})), {"a"}, kCut},
        {"WrongIdentifier",
         Binary(Concat({kMarker, {2, 0, 0, 0}, kElementA, {'V', 'L', 'I', 'T'}})),
         {"a"},
         "Wrong value list identifier"},
    }),
    [](const auto& row) { return row.param.name; });

TEST(RecordEntries, ConvertFromAnyTypeAndTheFirstOfANameCounts) {
  ValueList list;
  list.Add("MAC", std::uint32_t{7});
  list.Add("MAC", "second");
  list.Add("CTT", "300");
  list.Add("ICB", "1");
  list.Add("CVT", "64");
  list.AddVariant("DCV", Variant(std::int16_t{-1}));
  list.Add("mac", "another name");
  CameraRecord expected;
  expected.mac = "7";
  expected.ctt = 44;
  expected.icb = true;
  expected.vendorTypeMask = 64;
  expected.deviceFlags = 0xFFFFFFFF;
  CameraRecord record;
  ReadRecord(list, record);
  EXPECT_EQ(record, expected);
}

CameraRecord FullRecord() {
  CameraRecord record(CameraLogin("", "p\xC3\xA4ss", 255), CameraNetwork{"m", "n", {"", "x"}, "i", "s", "g", 0},
                      CameraProduct({"one", "two"}, "vendor", "model", "firmware", "serial"));
  record.icb = record.pcl = true;
  record.vendorTypeMask = 0xFEDCBA9876543210;
  return record;
}

TEST(RecordList, KeepsEveryMemberOfEveryRecord) {
  const std::vector<CameraRecord> records = {CameraRecord(), FullRecord(), CameraRecord()};
  ValueList list;
  WriteRecordList(list, kCameraInfoListKey, records);
  std::vector<CameraRecord> read = {FullRecord()};
  ReadRecordList(list, kCameraInfoListKey, read);
  ASSERT_EQ(read.size(), 4U);
  EXPECT_EQ(std::vector<CameraRecord>(read.begin() + 1, read.end()), records);
}

/// The recorded list of three cameras, in its binary form.
Bytes ThreeCameras() {
  ValueList list;
  std::vector<CameraRecord> records = {FullRecord(), CameraRecord(), FullRecord()};
  records.front().mac = "first";
  WriteRecordList(list, kCameraInfoListKey, records);
  const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  list.Write(*buffer);
  return BytesOf(*buffer);
}

TEST(FirstRecord, IsTheFirstOfTheListAndTheWholeListIsChecked) {
  const Bytes whole = ThreeCameras();
  const auto read = [&](std::size_t size) { return ReadFirstRecord(*Kestrel::CreateBuffer(whole.data(), size)); };
  EXPECT_EQ(read(whole.size()).mac, "first");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    EXPECT_THROW(read(size), Kestrel::BufferException);
  }
  Bytes damaged = whole;
  const std::string_view text(reinterpret_cast<const char*>(whole.data()), whole.size());
  damaged[text.rfind("LUN") - 10 - 9] = 'X';  // the identifier of the last record
  EXPECT_THROW(ReadFirstRecord(*Kestrel::CreateBuffer(damaged.data(), damaged.size())), Kestrel::ValueListException);
}

/// The long way: every element through a value list.
template <class Element>
void ReadSlowly(const ValueList& list, std::string_view key, std::vector<Element>& elements) {
  const auto found = list.FindBinaryData(key);
  if (!found || found->size() < 5 || !std::equal(kMarker.begin(), kMarker.end(), found->begin())) return;
  const auto block = Kestrel::CreateBuffer(found->data(), found->size());
  block->Take(4);
  for (std::uint32_t count = block->ReadUInt32(); count > 0; --count) {
    ValueList inner;
    inner.Read(*block);
    Element element{};
    if constexpr (std::is_same_v<Element, CameraRecord>) {
      ReadRecord(inner, element);
      element.ni2.clear();
      element.pluginNames.clear();
      ReadSlowly(inner, "NI2", element.ni2);
      ReadSlowly(inner, "PLN", element.pluginNames);
    } else {
      inner.Get(kListElementKey, element);
    }
    elements.push_back(element);
  }
}

/// What comes of the bytes: the records, and the exception behind them.
using Read = void (*)(const ValueList&, std::string_view, std::vector<CameraRecord>&);
std::pair<std::vector<CameraRecord>, std::string> Outcome(const Bytes& bytes, Read read) {
  std::vector<CameraRecord> records;
  try {
    ValueList list;
    list.Read(*Kestrel::CreateBuffer(bytes.data(), bytes.size()));
    read(list, kCameraInfoListKey, records);
  } catch (const Kestrel::KestrelException& exception) {
    return {records, exception.GetClassName() + exception.GetDescription()};
  }
  return {records, ""};
}

TEST(RecordList, WithAnyByteDamagedReadsAsItDoesThroughValueLists) {
  const Bytes whole = ThreeCameras();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int change : {1, 0x80, 0xFF}) {
      Bytes damaged = whole;
      damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ change);
      SCOPED_TRACE(testing::Message() << at << " ^ " << change);
      ASSERT_EQ(Outcome(damaged, ReadRecordList), Outcome(damaged, ReadSlowly<CameraRecord>));
    }
  }
}

TEST(FirstRecord, IsADefaultRecordWithoutAList) {
  const Bytes empty = kElementWithoutMac;
  EXPECT_EQ(ReadFirstRecord(*Kestrel::CreateBuffer(empty.data(), empty.size())), CameraRecord());
}

}  // namespace
}  // namespace Tarn::CameraFinding
