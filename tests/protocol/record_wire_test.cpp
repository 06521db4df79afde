#include "protocol/record_wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <type_traits>
#include <utility>

#include "base/exceptions.h"
#include "fakes/counting_allocator.h"
#include "protocol/camera_reply.h"
#include "protocol/record_equality.h"
#include "protocol/recording_wizard.h"
#include "protocol/request_wire.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

using Kestrel::ValueList;
using Kestrel::Variant;
using Records = std::vector<CameraRecord>;

auto BufferOf(const Bytes& bytes) {
  return Kestrel::CreateBuffer(bytes.data(), bytes.size());
}
Variant Binary(const Bytes& bytes) {
  return Variant(Kestrel::BinaryData(BufferOf(bytes)));
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

const Bytes kMarker = {0xFF, 0x45, 0x43, 0x42};
const Bytes kElementA = {'V', 'L', 'I', 'S', 0x0B, 1,   0,   0, 0,    0, 1, 0, 0, 0,   0x0B,
                         4,   0,   0,   0,   'm',  'a', 'c', 0, 0x0B, 2, 0, 0, 0, 'a', 0};
const Bytes kElementWithoutMac = {'V', 'L', 'I', 'S', 0x0B, 1, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr char kCut[] = "read failed - not enough bytes in buffer";

TEST(TextList, HoldsWhatAVectorHolds) {
  TextList list, copy;
  std::vector<std::string> expected;
  for (const int after : {1, 2, 3, 2, 3, 4, 1, 0, 1, 2, 1, 3}) {
    for (; static_cast<int>(expected.size()) < after; list.push_back(expected.back()))
      expected.push_back("a text that is long enough for the heap " + std::to_string(after));
    for (; static_cast<int>(expected.size()) > after; list.pop_back()) expected.pop_back();
    copy = list;
    list = TextList(std::move(copy));
    EXPECT_TRUE(std::ranges::equal(list, expected)) << testing::PrintToString(list);
  }
}

TEST(StringList, IsWrittenBehindMarkerAndCount) {
  const auto written = [](const TextList& texts) {
    ValueList list;
    WriteStringList(list, "NI2", texts);
    const auto block = list.Find("NI2")->GetIf<Kestrel::BinaryData>()->GetBytes();
    return Bytes(block.begin(), block.end());
  };
  EXPECT_EQ(written({}), (kMarker + Bytes{0, 0, 0, 0}));
  EXPECT_EQ(written({"a", "a"}), (kMarker + Bytes{2, 0, 0, 0} + kElementA + kElementA));
}

TEST(StringList, IsAppendedIgnoredOrRefused) {
  const struct {
    const char* name;
    Variant value;
    TextList texts;
    const char* thrown;
  } rows[] = {
      {"not binary", Variant("text"), {}, ""},
      {"without bytes", Variant(Kestrel::BinaryData()), {}, ""},
      {"marker alone", Binary(kMarker), {}, ""},
      {"wrong marker", Binary(Bytes{0xFE, 0x45, 0x43, 0x42, 1, 0, 0, 0} + kElementA), {}, ""},
      {"cut in the count", Binary(kMarker + Bytes{1}), {}, kCut},
      {"empty", Binary(kMarker + Bytes{0, 0, 0, 0}), {}, ""},
      {"elements with and without mac",
       Binary(kMarker + Bytes{3, 0, 0, 0} + kElementWithoutMac + kElementA + kElementWithoutMac),
       {"", "a", ""},
       ""},
      {"bytes behind", Binary(kMarker + Bytes{1, 0, 0, 0} + kElementA + Bytes{0}), {"a"}, ""},
      {"count too large", Binary(kMarker + Bytes{0xFF, 0xFF, 0xFF, 0xFF} + kElementA), {"a"}, kCut},
      {"wrong identifier", Binary(kMarker + Bytes{1, 0, 0, 0, 'V', 'L', 'I', 'T'}), {}, "Wrong value list identifier"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    ValueList list;
    list.AddVariant("PLN", row.value);
    TextList texts = {"before"};
    std::string thrown;
    try {
      ReadStringList(list, "PLN", texts);
      ReadStringList(list, "absent", texts);
    } catch (const Kestrel::KestrelException& exception) {
      thrown = exception.GetDescription();
    }
    EXPECT_EQ(thrown, row.thrown);
    EXPECT_TRUE(std::ranges::equal(std::span(texts).subspan(1), row.texts)) << testing::PrintToString(texts);
  }
}

TEST(RecordEntries, ConvertFromAnyTypeAndTheFirstOfANameCounts) {
  ValueList list;
  list.Add("LUN", "usual");
  list.Add("CTT", "300");
  list.Add("CTT", "1");
  list.Add("MAC", std::uint32_t{7});
  list.Add("MAC", "second");
  list.Add("ICB", "1");
  list.Add("CVT", "64");
  list.AddVariant("DCV", Variant(std::int16_t{-1}));
  list.Add("mac", "another name");
  CameraRecord expected;
  expected.loginUser = "usual";
  expected.mac = "7";
  expected.ctt = 44;
  expected.icb = true;
  expected.vendorTypeMask = 64;
  expected.deviceFlags = 0xFFFFFFFF;
  CameraRecord record;
  ReadRecord(list, record);
  EXPECT_EQ(record, expected);
}

/// The long way: every element through a value list.
template <class Elements>
void ReadSlowly(const ValueList& list, std::string_view key, Elements& elements) {
  using Element = typename Elements::value_type;
  Kestrel::ReferencePointer<Kestrel::Buffer> block;
  list.GetBinaryData(key, block);
  if (!block || block->GetLength() < 5 || !std::ranges::equal(kMarker, block->GetBytes().first(4))) return;
  block->Take(4);
  for (std::uint32_t count = block->ReadUInt32(); count > 0; --count) {
    ValueList inner;
    inner.Read(*block);
    Element element{};
    if constexpr (std::is_same_v<Element, CameraRecord>) {
      ReadRecord(inner, element);
      element.ni2 = {};
      element.pluginNames = {};
      ReadSlowly(inner, "NI2", element.ni2);
      ReadSlowly(inner, "PLN", element.pluginNames);
    } else {
      inner.Get(kListElementKey, element);
    }
    elements.push_back(element);
  }
}

/// What comes of the bytes: the records, and the exception behind them.
template <class ReadBytes>
std::pair<Records, std::string> Outcome(const Bytes& bytes, ReadBytes read) {
  Records records;
  try {
    read(*BufferOf(bytes), records);
  } catch (const Kestrel::KestrelException& exception) {
    return {records, exception.GetClassName() + exception.GetDescription()};
  }
  return {records, ""};
}

void ExpectTheSameEveryWay(const Bytes& bytes) {
  const auto slow = Outcome(bytes, [](Kestrel::Buffer& buffer, Records& records) {
    ValueList list;
    list.Read(buffer);
    ReadSlowly(list, kCameraInfoListKey, records);
  });
  EXPECT_EQ(Outcome(bytes,
                    [](Kestrel::Buffer& buffer, Records& records) {
                      ValueList list;
                      list.Read(buffer);
                      ReadRecordList(list, kCameraInfoListKey, records);
                    }),
            slow);
  const auto first =
      Outcome(bytes, [](Kestrel::Buffer& buffer, Records& records) { records = {ReadFirstRecord(buffer)}; });
  EXPECT_EQ(first.second, slow.second);
  if (!first.second.empty()) return;
  EXPECT_EQ(first.first.front(), slow.first.empty() ? CameraRecord() : slow.first.front());
}

TEST(RecordList, WholeCutOrDamagedReadsAsItDoesThroughValueLists) {
  CameraRecord record(CameraLogin("", "p\xC3\xA4ss", 255), CameraNetwork{"m", "n", {"", "x"}, "i", "s", "g", 0},
                      CameraProduct({"one", "two"}, "vendor", "model", "firmware", "serial"));
  record.icb = record.pcl = true;
  record.vendorTypeMask = 0xFEDCBA9876543210;
  const Records records = {record, CameraRecord()};
  ValueList list;
  WriteRecordList(list, kCameraInfoListKey, records);
  Records read;
  ReadRecordList(list, kCameraInfoListKey, read);
  EXPECT_EQ(read, records);
  const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  list.Write(*buffer);
  const Bytes whole(buffer->GetBytes().begin(), buffer->GetBytes().end());
  for (std::size_t at = 0; at < whole.size() && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    ExpectTheSameEveryWay(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at)));
    for (const int change : {0, 1, 3, 0x80, 0xFF}) {
      Bytes damaged = whole;
      damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ change);
      ExpectTheSameEveryWay(damaged);
    }
  }
}

/// What the work takes of the general heap, in bytes and in allocations, whether or not it throws.
template <class Work>
std::pair<std::int64_t, std::int64_t> HeapOf(Work work) {
  const std::int64_t held = fakes::GetHeapUse().bytes, allocations = fakes::CountAllocations();
  fakes::ResetHeapPeak();
  try {
    work();
  } catch (const Kestrel::KestrelException&) {
  }
  return {fakes::GetHeapUse().peak - held, fakes::CountAllocations() - allocations};
}

TEST(RecordList, TakesLittleMemoryWhereItIsCanonicalAndWhateverItsCountClaims) {
  constexpr std::int64_t kCount = 1000, kWindow = 40 << 10, kSize = 1 << 20;
  constexpr std::int64_t kRecords = kCount * std::int64_t{sizeof(CameraRecord)};
  ValueList list, lying;
  WriteRecordList(list, kCameraInfoListKey, Records(1000));
  lying.AddVariant(kCameraInfoListKey, Binary(kMarker + Bytes{0xFF, 0xFF, 0xFF, 0xFF} + Bytes(kSize)));
  const auto block = Kestrel::GetBuffer(Kestrel::SmallBufferList), reply = EncodeReply(list);
  const auto lyingReply = EncodeReply(lying);
  list.Write(*block);
  Records read, slowly;
  TextList texts;
  // No value list for each record; for a long reply one window beside the records, not a copy of the text.
  EXPECT_LT(HeapOf([&] { ReadRecordList(list, kCameraInfoListKey, read); }).second, 2);
  EXPECT_EQ(HeapOf([&] { ReadFirstRecord(*block); }).second, 0);
  EXPECT_GT(HeapOf([&] { ReadSlowly(list, kCameraInfoListKey, slowly); }).second, kCount);
  EXPECT_LT(HeapOf([&] { ReadCameraReply(reply->GetBytes()); }).first, kRecords + kWindow);
  // A server that writes the list as a message puts "CMD" in front.
  ValueList message;
  message.Add("CMD", 3U);
  WriteRecordList(message, kCameraInfoListKey, Records(1000));
  const auto withCommand = EncodeReply(message);
  EXPECT_LT(HeapOf([&] { ReadCameraReply(withCommand->GetBytes()); }).first, kRecords + kWindow);
  EXPECT_EQ(ReadCameraReply(withCommand->GetBytes()), Records(1000));
  // Room for what the bytes can hold.
  EXPECT_LT(HeapOf([&] { ReadRecordList(lying, kCameraInfoListKey, read); }).first, 4 * kSize);
  EXPECT_LT(HeapOf([&] { ReadStringList(lying, kCameraInfoListKey, texts); }).first, 4 * kSize);
  EXPECT_LT(HeapOf([&] { ReadCameraReply(lyingReply->GetBytes()); }).first, 8 * kSize);
}

}  // namespace
}  // namespace Tarn::CameraFinding
