#include "protocol/record_wire.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>

#include "base/text_conversion.h"
#include "protocol/record_keys.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

static_assert(std::endian::native == std::endian::little, "numbers go onto the wire as they stand in memory");

/// "VLIS", a name and a count take this much at least, so no block holds more elements than its bytes allow.
constexpr std::size_t kSmallestElement = 10;
/// A block of fewer bytes is none.
constexpr std::size_t kSmallestListBlock = 5;

/// The elements of a list block, one value list after the other.
class ListBlock {
 public:
  /// The block under the key; nothing where there is none, it is no binary data, too short or without the marker.
  static std::optional<ListBlock> Find(const Kestrel::ValueList& list, std::string_view key) {
    const auto bytes = list.FindBinaryData(key);
    if (!bytes || bytes->size() < kSmallestListBlock || std::memcmp(bytes->data(), &ListMarker, sizeof ListMarker) != 0)
      return std::nullopt;
    return ListBlock(*bytes);
  }

  std::uint32_t GetCount() const { return count_; }
  /// How many elements to make room for: never more than the bytes can hold.
  std::size_t GetCapacity() const {
    return std::min<std::size_t>(count_, static_cast<std::size_t>(buffer_->GetUnreadLength()) / kSmallestElement);
  }
  /// The next element, valid until the next call.
  const Kestrel::ValueList& Next() {
    element_.Clear();
    element_.Read(*buffer_);
    return element_;
  }

 private:
  explicit ListBlock(std::span<const std::uint8_t> bytes) : buffer_(Kestrel::CreateBuffer(bytes.data(), bytes.size())) {
    buffer_->Take(sizeof ListMarker);
    count_ = buffer_->ReadUInt32();
  }

  Kestrel::ReferencePointer<Kestrel::Buffer> buffer_;
  std::uint32_t count_ = 0;
  Kestrel::ValueList element_;
};

/// Writes marker, count and one element per item; fill makes an item's value list.
template <class Items, class Fill>
void WriteList(Kestrel::ValueList& list, std::string_view key, const Items& items, Fill fill) {
  const auto block = Kestrel::GetBuffer(Kestrel::BufferPool::ListFor(items.size() * sizeof items[0]));
  const std::uint32_t count = Kestrel::ClipSizeT(items.size());
  block->Append(&ListMarker, sizeof ListMarker);
  block->Append(&count, sizeof count);
  for (const auto& item : items) {
    Kestrel::ValueList element;
    fill(element, item);
    element.Write(*block);
  }
  // The block is nobody else's, so the value may share it: nobody can tell it from the copy that AddBinaryData makes.
  list.AddVariant(key, Kestrel::Variant(Kestrel::BinaryData(block)));
}

}  // namespace

void WriteRecord(Kestrel::ValueList& list, const CameraRecord& record) {
  ForEachMember(record, [&](std::string_view key, const auto& value) {
    if constexpr (std::is_same_v<decltype(value), const std::vector<std::string>&>)
      WriteStringList(list, key, value);
    else
      list.Add(key, value);
  });
}

void ReadRecord(const Kestrel::ValueList& list, CameraRecord& record) {
  ForEachMember(record, [&](std::string_view key, auto& value) {
    if constexpr (std::is_same_v<decltype(value), std::vector<std::string>&>)
      ReadStringList(list, key, value);
    else
      list.Get(key, value);
  });
}

void WriteStringList(Kestrel::ValueList& list, std::string_view key, const std::vector<std::string>& texts) {
  WriteList(list, key, texts, [](Kestrel::ValueList& element, const std::string& text) {
    element.Add(kListElementKey, std::string_view(text));
  });
}

void ReadStringList(const Kestrel::ValueList& list, std::string_view key, std::vector<std::string>& texts) {
  auto block = ListBlock::Find(list, key);
  if (!block) return;
  texts.reserve(texts.size() + block->GetCapacity());
  for (std::uint32_t i = 0; i < block->GetCount(); ++i) {
    std::string text;
    block->Next().Get(kListElementKey, text);
    texts.push_back(std::move(text));
  }
}

void WriteRecordList(Kestrel::ValueList& list, std::string_view key, const std::vector<CameraRecord>& records) {
  WriteList(list, key, records, WriteRecord);
}

void ReadRecordList(const Kestrel::ValueList& list, std::string_view key, std::vector<CameraRecord>& records) {
  auto block = ListBlock::Find(list, key);
  if (!block) return;
  records.reserve(records.size() + block->GetCapacity());
  for (std::uint32_t i = 0; i < block->GetCount(); ++i) {
    CameraRecord record;
    ReadRecord(block->Next(), record);
    records.push_back(std::move(record));
  }
}

CameraRecord ReadFirstRecord(Kestrel::Buffer& block) {
  Kestrel::ValueList list;
  list.Read(block);
  CameraRecord first;
  auto records = ListBlock::Find(list, kCameraInfoListKey);
  if (!records) return first;
  for (std::uint32_t i = 0; i < records->GetCount(); ++i) {
    CameraRecord record;
    ReadRecord(records->Next(), record);
    if (i == 0) first = std::move(record);
  }
  return first;
}

}  // namespace Tarn::CameraFinding
