#include "protocol/record_wire.h"

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>

#include "base/byte_order.h"
#include "base/exceptions.h"
#include "platform/compiler.h"
#include "protocol/canonical_record.h"
#include "protocol/record_format.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

/// Shorter blocks are ignored. One of 5 to 7 bytes with the marker is an error, because marker and count take 8.
constexpr std::size_t kSmallestListBlock = 5;

/// Finds the entries of a record's keys. Fast while all keys stand in wire order; after the first that does not, it
/// looks them up by name.
class KeyFinder {
 public:
  explicit KeyFinder(const Kestrel::ValueList& list) : list_(list) {}

  /// The first entry of the row's key, or null. Requires rows in their order, each once.
  const Kestrel::Variant* Find(std::size_t row) {
    const auto& entries = list_.GetEntries();
    const std::string_view key = kRecordKeys[row].key;
    inOrder_ = inOrder_ && row < entries.size() && entries[row].name == key;
    return inOrder_ ? &entries[row].value : list_.Find(key);
  }

 private:
  const Kestrel::ValueList& list_;
  bool inOrder_ = true;
};

void ReadElement(const Kestrel::ValueList& list, CameraRecord& record) {
  ReadRecord(list, record);
}
void ReadElement(const Kestrel::ValueList& list, std::string& text) {
  list.Get(kListElementKey, text);
}

/// Reads the elements of a list block one after the other. The block's bytes must outlive it.
class ListBlock {
 public:
  /// The block that an entry holds; nothing where the entry is to be ignored.
  static std::optional<ListBlock> In(const Kestrel::Variant* entry) {
    const auto* const data = entry ? entry->GetIf<Kestrel::BinaryData>() : nullptr;
    if (!data) return std::nullopt;
    const auto bytes = data->GetBytes();
    if (bytes.size() < kSmallestListBlock || Kestrel::LoadLittleEndian<std::uint32_t>(bytes.data()) != ListMarker)
      return std::nullopt;
    return ListBlock(bytes.subspan(sizeof ListMarker));
  }

  std::uint32_t GetCount() const { return count_; }
  /// As many elements as the count claims, but no more than the bytes can hold in the canonical encoding.
  template <class Element>
  std::size_t GetLikelyCount() const {
    return std::min<std::size_t>(count_, unread_.size() / kSmallestElement<Element>);
  }

  /// Reads the next element. False where it is not canonical: the contents of `element` are unspecified then, and
  /// ReadThroughList reads the same bytes again. Requires a new `element`, because reading appends to its lists.
  template <class Element>
  bool ReadCanonical(Element& element) {
    const std::size_t size = DecodeElement(unread_, element);
    unread_ = unread_.subspan(size);
    return size != 0;
  }
  template <class Element>
  Element ReadThroughList() {
    Element element;
    ReadElement(NextList(), element);
    return element;
  }
  /// How many of the next `most` elements are value lists. Requires that ReadThroughList was not called yet.
  std::size_t CountLists(std::size_t most) const {
    ListBlock ahead = *this;
    std::size_t count = 0;
    try {
      while (count < most) {
        ahead.NextList();
        ++count;
      }
    } catch (const Kestrel::KestrelException&) {  // ReadThroughList throws it again
    }
    return count;
  }

 private:
  explicit ListBlock(std::span<const std::uint8_t> counted) {
    if (counted.size() < sizeof count_) throw Kestrel::BufferException(Kestrel::kNotEnoughBytes);
    count_ = Kestrel::LoadLittleEndian<std::uint32_t>(counted.data());
    unread_ = counted.subspan(sizeof count_);
  }

  /// The next element as a value list, valid until the next call.
  const Kestrel::ValueList& NextList() {
    if (!buffer_) {
      buffer_ = Kestrel::CreateBuffer(unread_.data(), unread_.size());
      unread_ = buffer_->GetBytes();
    }
    buffer_->Take(buffer_->GetUnreadLength() - unread_.size());  // over the canonical elements since the last call
    list_.Clear();
    list_.Read(*buffer_);
    unread_ = unread_.last(static_cast<std::size_t>(buffer_->GetUnreadLength()));
    return list_;
  }

  std::uint32_t count_ = 0;
  std::span<const std::uint8_t> unread_;
  Kestrel::ReferencePointer<Kestrel::Buffer> buffer_;  ///< made for the first element that is not canonical
  Kestrel::ValueList list_;
};

template <class Elements>
void WriteList(Kestrel::ValueList& list, std::string_view key, const Elements& elements) {
  const auto block = Kestrel::Buffer::CreateExact(EncodedListSize(elements));
  EncodeList(elements, block->GetData());
  // Not AddBinaryData, which copies: nobody else has this block, so the value may share it.
  list.AddVariant(key, Kestrel::Variant(Kestrel::BinaryData(block)));
}

template <class Elements>
void ReadList(const Kestrel::Variant* entry, Elements& elements) {
  using Element = typename Elements::value_type;
  auto block = ListBlock::In(entry);
  if (!block) return;
  elements.reserve(elements.size() + block->GetLikelyCount<Element>());
  bool isCounted = false;
  for (std::uint32_t i = 0; i < block->GetCount(); ++i) {
    if (block->ReadCanonical(elements.emplace_back())) continue;
    elements.pop_back();
    // Room for all at once, because a vector that grows holds its elements twice, and a record of 544 bytes may stand
    // for a list of 10.
    if (!std::exchange(isCounted, true)) elements.reserve(elements.size() + block->CountLists(block->GetCount() - i));
    elements.push_back(block->ReadThroughList<Element>());
  }
}

/// Reads a value list that is canonical from end to end. Returns its size in bytes; 0 for any other.
std::size_t ReadCanonicalFirstRecord(std::span<const std::uint8_t> bytes, CameraRecord& first) {
  const auto head = DecodeCameraListHead(bytes);
  if (!head || head->recordsSizeInBytes > bytes.size() - head->sizeInBytes) return 0;
  auto unread = bytes.subspan(head->sizeInBytes, head->recordsSizeInBytes);
  for (std::uint32_t i = 0; i < head->recordCount; ++i) {
    CameraRecord later;
    const std::size_t size = DecodeElement(unread, i == 0 ? first : later);
    if (size == 0) return 0;
    unread = unread.subspan(size);
  }
  return head->sizeInBytes + head->recordsSizeInBytes;
}

}  // namespace

/// Flattened like ReadRecord, because each row has a name and a type that are known when it is compiled.
TARN_FLATTEN void WriteRecord(Kestrel::ValueList& list, const CameraRecord& record) {
  list.Reserve(std::size(kRecordKeys));
  ForEachMember(record, [&](auto row, const auto& value) {
    constexpr std::string_view key = kRecordKeys[row].key;
    if constexpr (std::is_same_v<decltype(value), const TextList&>)
      WriteStringList(list, key, value);
    else
      list.Add(key, value);
  });
}

TARN_FLATTEN void ReadRecord(const Kestrel::ValueList& list, CameraRecord& record) {
  KeyFinder keys(list);
  ForEachMember(record, [&keys](auto row, auto& value) {
    using Value = std::remove_reference_t<decltype(value)>;
    const Kestrel::Variant* const entry = keys.Find(row);
    if constexpr (std::is_same_v<Value, TextList>)
      ReadList(entry, value);
    else if (entry)
      entry->AssignTo(value);
  });
}

void WriteStringList(Kestrel::ValueList& list, std::string_view key, const TextList& texts) {
  WriteList(list, key, texts);
}

void ReadStringList(const Kestrel::ValueList& list, std::string_view key, TextList& texts) {
  ReadList(list.Find(key), texts);
}

void WriteRecordList(Kestrel::ValueList& list, std::string_view key, const std::vector<CameraRecord>& records) {
  WriteList(list, key, records);
}

void ReadRecordList(const Kestrel::ValueList& list, std::string_view key, std::vector<CameraRecord>& records) {
  ReadList(list.Find(key), records);
}

CameraRecord ReadFirstRecord(Kestrel::Buffer& block) {
  CameraRecord first;
  const auto unread = block.GetBytes().last(static_cast<std::size_t>(block.GetUnreadLength()));
  if (const std::size_t size = ReadCanonicalFirstRecord(unread, first)) {
    block.Take(size);
    return first;
  }
  first = CameraRecord();
  Kestrel::ValueList list;
  list.Read(block);
  auto records = ListBlock::In(list.Find(kCameraInfoListKey));
  if (!records) return first;
  for (std::uint32_t i = 0; i < records->GetCount(); ++i) {
    CameraRecord later;
    CameraRecord& record = i == 0 ? first : later;
    if (!records->ReadCanonical(record)) record = records->ReadThroughList<CameraRecord>();
  }
  return first;
}

}  // namespace Tarn::CameraFinding
