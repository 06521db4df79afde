#include "protocol/canonical_record.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "base/byte_order.h"
#include "base/text_conversion.h"
#include "platform/compiler.h"
#include "protocol/canonical_bytes.h"
#include "protocol/finder_messages.h"
#include "protocol/record_format.h"
#include "valuelist/value_list.h"
#include "valuelist/wire_text.h"

namespace Tarn::CameraFinding {
namespace {

template <class Value>
constexpr bool kIsText = std::is_same_v<Value, std::string>;
template <class Value>
constexpr bool kIsTexts = std::is_same_v<Value, TextList>;

/// The tag of a member's value.
template <class Value>
constexpr Kestrel::VariantType kMemberTag = [] {
  if constexpr (kIsText<Value>) return Kestrel::vtString;
  if constexpr (kIsTexts<Value>) return Kestrel::vtBinaryData;
  if constexpr (std::is_same_v<Value, bool>) return Kestrel::vtBool;
  if constexpr (std::is_same_v<Value, std::uint8_t>) return Kestrel::vtUChar;
  if constexpr (std::is_same_v<Value, std::uint32_t>) return Kestrel::vtUInt;
  if constexpr (std::is_same_v<Value, std::uint64_t>) return Kestrel::vtInt64;  // of the same width; see value_list.h
}();

constexpr FixedBytes kRecordHead = ValueListHead(kRecordKeys.size());
constexpr FixedBytes kOneEntryHead = ValueListHead(1);
constexpr FixedBytes kCommandHead = ValueListHead(2).Entry(kCommandKey, Kestrel::vtUInt);
constexpr FixedBytes kTextEntry = FixedBytes().Entry(kListElementKey, Kestrel::vtString);
constexpr FixedBytes kCameraListEntry = FixedBytes().Entry(kCameraInfoListKey, Kestrel::vtBinaryData);
constexpr FixedBytes kListHead = FixedBytes().Number(ListMarker);

template <std::size_t row, class Value>
constexpr FixedBytes kRecordEntry = FixedBytes().Entry(kRecordKeys[row].key, kMemberTag<Value>);

constexpr std::size_t kListHeadSize = kListHead.size + kLengthSize;

template <class Value>
constexpr std::size_t kSmallestValue = kIsText<Value>    ? kLengthSize + 1
                                       : kIsTexts<Value> ? kLengthSize + kListHeadSize
                                                         : sizeof(Value);
static_assert(kSmallestElement<std::string> == kOneEntryHead.size + kTextEntry.size + kSmallestValue<std::string>);
static_assert([] {
  std::size_t size = kRecordHead.size;
  for (const RecordKey& row : kRecordKeys)
    size += std::visit(
        [&row]<class Value>(Value CameraRecord::*) {
          return FixedBytes().Entry(row.key, kMemberTag<Value>).size + kSmallestValue<Value>;
        },
        row.member);
  return size == kSmallestElement<CameraRecord>;
}());

class Writer : public CanonicalWriter {
 public:
  using CanonicalWriter::CanonicalWriter;
  using CanonicalWriter::PutValue;

  void PutValue(const TextList& texts) {
    PutNumber(EncodedListSize(texts));
    PutList(texts);
  }
  void PutElement(const std::string& text) {
    Put<kOneEntryHead>();
    Put<kTextEntry>();
    PutValue(text);
  }
  void PutElement(const CameraRecord& record) {
    Put<kRecordHead>();
    at_ = EncodeEntries(record, at_);
  }
  template <class Elements>
  void PutList(const Elements& elements) {
    Put<kListHead>();
    PutNumber(Kestrel::ClipSizeT(elements.size()));
    for (const auto& element : elements) PutElement(element);
  }
};

using CameraFinding::ValueSize;
std::size_t ValueSize(const TextList& texts) {
  return kLengthSize + EncodedListSize(texts);
}

std::size_t ElementSize(const std::string& text) {
  return kOneEntryHead.size + kTextEntry.size + ValueSize(text);
}
std::size_t ElementSize(const CameraRecord& record) {
  return kRecordHead.size + EncodedEntriesSize(record);
}

template <class Elements>
std::size_t ListSize(const Elements& elements) {
  std::size_t size = kListHeadSize;
  for (const auto& element : elements) size += ElementSize(element);
  return size;
}

/// Reads the canonical encoding front to back. Each step returns false where the next bytes are something else.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : at_(bytes.data()), end_(at_ + bytes.size()) {}

  std::size_t GetRemaining() const { return static_cast<std::size_t>(end_ - at_); }

  template <const FixedBytes& fixed>
  bool Skip() {
    if (GetRemaining() < fixed.size || std::memcmp(at_, fixed.bytes.data(), fixed.size) != 0) return false;
    at_ += fixed.size;
    return true;
  }
  template <class Number>
  requires std::is_arithmetic_v<Number>
  bool Read(Number& number) {
    if (GetRemaining() < sizeof number) return false;
    if constexpr (std::is_same_v<Number, bool>) {
      if (*at_ > 1) return false;
      number = *at_ == 1;
    } else {
      number = Kestrel::LoadLittleEndian<Number>(at_);
    }
    at_ += sizeof number;
    return true;
  }
  bool Read(std::string& text) {
    std::span<const std::uint8_t> bytes;
    if (!ReadSized(bytes) || bytes.empty()) return false;
    const std::string_view characters(reinterpret_cast<const char*>(bytes.data()), bytes.size() - 1);
    Kestrel::WireText{characters, bytes.size() + GetRemaining()}.AssignTo(text);
    return true;
  }
  bool Read(TextList& texts) {
    std::span<const std::uint8_t> block;
    if (!ReadSized(block)) return false;
    Reader elements(block);
    std::uint32_t count = 0;
    if (!elements.Skip<kListHead>() || !elements.Read(count)) return false;
    texts.reserve(std::min<std::size_t>(count, elements.GetRemaining() / kSmallestElement<std::string>));
    for (std::uint32_t i = 0; i < count; ++i)
      if (!elements.ReadElement(texts.emplace_back())) return false;
    return true;
  }

  bool ReadElement(std::string& text) { return Skip<kOneEntryHead>() && Skip<kTextEntry>() && Read(text); }
  bool ReadElement(CameraRecord& record) {
    bool canonical = Skip<kRecordHead>();
    ForEachMember(record, [&](auto row, auto& value) {
      canonical = canonical && Skip<kRecordEntry<row, std::remove_cvref_t<decltype(value)>>>() && Read(value);
    });
    return canonical;
  }

 private:
  bool ReadSized(std::span<const std::uint8_t>& bytes) {
    std::uint32_t length = 0;
    if (!Read(length) || GetRemaining() < length) return false;
    bytes = {at_, length};
    at_ += length;
    return true;
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

template <class Element>
std::size_t Decode(std::span<const std::uint8_t> bytes, Element& element) {
  Reader reader(bytes);
  return reader.ReadElement(element) ? bytes.size() - reader.GetRemaining() : 0;
}

}  // namespace

std::size_t DecodeElement(std::span<const std::uint8_t> bytes, CameraRecord& record) {
  return Decode(bytes, record);
}
std::size_t DecodeElement(std::span<const std::uint8_t> bytes, std::string& text) {
  return Decode(bytes, text);
}

std::optional<CameraListHead> DecodeCameraListHead(std::span<const std::uint8_t> bytes) {
  Reader reader(bytes);
  std::uint32_t blockSize = 0;
  std::uint32_t count = 0;
  std::uint32_t command = 0;  // not looked at, as in a list that is read whole
  const bool hasHead = reader.Skip<kOneEntryHead>() || (reader.Skip<kCommandHead>() && reader.Read(command));
  if (!hasHead || !reader.Skip<kCameraListEntry>() || !reader.Read(blockSize) || !reader.Skip<kListHead>() ||
      !reader.Read(count) || blockSize < kListHeadSize)
    return std::nullopt;
  return CameraListHead{bytes.size() - reader.GetRemaining(), count, blockSize - kListHeadSize};
}

std::size_t EncodedEntriesSize(const CameraRecord& record) {
  std::size_t size = 0;
  ForEachMember(record, [&size](auto row, const auto& value) {
    size += kRecordEntry<row, std::remove_cvref_t<decltype(value)>>.size + ValueSize(value);
  });
  return size;
}
TARN_FLATTEN std::uint8_t* EncodeEntries(const CameraRecord& record, std::uint8_t* target) {
  Writer writer(target);
  ForEachMember(record, [&writer](auto row, const auto& value) {
    writer.Put<kRecordEntry<row, std::remove_cvref_t<decltype(value)>>>();
    writer.PutValue(value);
  });
  return writer.GetEnd();
}

std::size_t EncodedListSize(const std::vector<CameraRecord>& records) {
  return ListSize(records);
}
std::size_t EncodedListSize(const TextList& texts) {
  return ListSize(texts);
}

void EncodeList(const std::vector<CameraRecord>& records, std::uint8_t* target) {
  Writer(target).PutList(records);
}
void EncodeList(const TextList& texts, std::uint8_t* target) {
  Writer(target).PutList(texts);
}

}  // namespace Tarn::CameraFinding
