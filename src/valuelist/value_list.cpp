#include "valuelist/value_list.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <span>
#include <utility>

#include "base/base64.h"
#include "base/byte_order.h"
#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "platform/compiler.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/wire_text.h"

namespace Kestrel {
namespace {

/// Room for this many entries may be reserved however short the message is, because a record has 21.
constexpr std::uint64_t kFirstRoom = 32;
/// The tag and the length of a vtString.
constexpr std::size_t kStringHeaderSize = 5;

/// Writes numbers, names and values front to back. Requires a target with room for all of them.
class Writer {
 public:
  explicit Writer(std::uint8_t* target) : at_(target) {}

  void PutUInt32(std::uint32_t number) {
    StoreLittleEndian(at_, number);
    at_ += sizeof number;
  }
  void PutName(const std::string& name) {
    *at_++ = vtString;
    PutText(name);
  }
  void PutRecord(const Variant& value) {
    *at_++ = value.GetType();
    if (const auto* const text = value.GetIf<std::string>()) return PutText(*text);
    std::uint64_t length = value.GetFixedSize();
    if (length == kVariableSize) {
      length = value.GetSize();
      PutUInt32(static_cast<std::uint32_t>(length));
    }
    value.WriteRaw(at_);
    at_ += length;
  }

 private:
  void PutText(const std::string& text) {
    PutUInt32(static_cast<std::uint32_t>(text.size() + 1));
    at_ = PutTerminated(text, at_);
  }

  std::uint8_t* at_;
};

std::uint64_t NameSize(const std::string& name) {
  return kStringHeaderSize + name.size() + 1;
}

std::uint64_t RecordSize(const Variant& value) {
  if (const auto* const text = value.GetIf<std::string>()) return NameSize(*text);
  // Throws for an unreadable blob before room is made for the size that it claims.
  if (const auto* const blob = value.GetIf<BlobPtr>()) blob->GetBytes();
  const std::uint64_t length = value.GetFixedSize();
  return 1 + (length == kVariableSize ? sizeof(std::uint32_t) + value.GetSize() : length);
}

/// Whether the value shares the buffer, or is a blob that points into it.
bool HasBytesIn(const Variant& value, const Buffer& buffer) {
  if (const auto* const data = value.GetIf<BinaryData>()) return data->GetBuffer().Get() == &buffer;
  const auto* const blob = value.GetIf<BlobPtr>();
  const std::less<const std::uint8_t*> before;
  return blob && !before(blob->GetAddress(), buffer.GetData()) &&
         before(blob->GetAddress(), buffer.GetData() + buffer.GetLength());
}

Variant ReadPayload(Buffer& buffer, std::uint8_t tag) {
  Variant value = Variant::Create(tag);
  std::uint64_t length = value.GetFixedSize();
  if (length == kVariableSize) length = buffer.ReadUInt32();
  value.ReadRaw(buffer.Take(length), length);
  return value;
}

Variant ReadRecord(Buffer& buffer) {
  return ReadPayload(buffer, buffer.ReadUInt8());
}

/// Takes a vtString. Takes nothing and gives nothing where another record stands at the read position, or less than a
/// whole one.
std::optional<WireText> TakeText(Buffer& buffer) {
  const auto unread = static_cast<std::size_t>(buffer.GetUnreadLength());
  const std::uint8_t* const record = buffer.GetData() + buffer.GetReadPosition();
  if (unread < kStringHeaderSize || *record != vtString) return std::nullopt;
  const std::size_t length = LoadLittleEndian<std::uint32_t>(record + 1);
  if (length == 0 || length > unread - kStringHeaderSize) return std::nullopt;
  buffer.Take(kStringHeaderSize + length);
  const auto* const characters = reinterpret_cast<const char*>(record) + kStringHeaderSize;
  return WireText{{characters, length - 1}, unread - kStringHeaderSize};
}

/// The text of a record of any type.
std::string ReadName(Buffer& buffer) {
  if (const auto text = TakeText(buffer)) return text->MakeString();
  return ReadRecord(buffer).ToString();
}

/// A record of any type. Makes a text in one step, because most values are texts.
Variant ReadValue(Buffer& buffer) {
  if (const auto text = TakeText(buffer)) return Variant(*text);
  return ReadRecord(buffer);
}

/// The bytes that the base64 text stands for; null where the text is empty in the ANSI code page.
ReferencePointer<Buffer> Decoded(std::u16string_view text) {
  const auto decode = [](auto characters) {
    const std::uint64_t bound = Base64DecodedBound(characters.size());
    ReferencePointer<Buffer> bytes = GetBuffer(BufferPool::ListFor(bound));
    bytes->Truncate(Base64DecodeTo(characters, bytes->Reserve(bound)).byteCount);
    return bytes;
  };
  // ASCII is the same in every code page, so such a text is decoded without a narrow copy.
  if (!text.empty() && text.front() != 0 && std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; }))
    return decode(text);
  const std::string narrow = WideToAnsi(text);
  return narrow.empty() ? nullptr : decode(std::string_view(narrow));
}

}  // namespace

ValueListEntry::ValueListEntry(Buffer& buffer, BlobBytes blobBytes)
    : name(ReadName(buffer)), value(ReadValue(buffer)) {
  if (blobBytes == BlobBytes::kOwn) value.OwnBytes();
}

void ValueList::AddBinaryData(std::string_view name, const ReferencePointer<Buffer>& buffer) {
  const BinaryData shared(buffer);
  AddVariant(name, Variant(shared));
}

const Variant* ValueList::Find(std::string_view name) const {
  const auto entry = std::ranges::find(entries_, name, &ValueListEntry::name);
  return entry == entries_.end() ? nullptr : &entry->value;
}

void ValueList::GetBinaryData(std::string_view name, ReferencePointer<Buffer>& value) const {
  const Variant* const found = Find(name);
  if (!found) return;
  const BinaryData* const data = found->GetIf<BinaryData>();
  value = data ? data->GetBuffer() : nullptr;
}

std::uint64_t ValueList::GetBinarySize() const {
  std::uint64_t size = sizeof ValueListIdentifier + NameSize(name_) + sizeof(std::uint32_t);
  for (const ValueListEntry& entry : entries_) size += NameSize(entry.name) + RecordSize(entry.value);
  return size;
}

void ValueList::WriteTo(std::uint8_t* target) const {
  Writer writer(target);
  writer.PutUInt32(ValueListIdentifier);
  writer.PutName(name_);
  writer.PutUInt32(ClipSizeT(entries_.size()));
  for (const ValueListEntry& entry : entries_) {
    writer.PutName(entry.name);
    writer.PutRecord(entry.value);
  }
}

void ValueList::Write(Buffer& buffer) const {
  // Writing changes the buffer's length and may move its bytes. Where values need those bytes, the list is written into
  // another buffer first.
  if (std::ranges::any_of(entries_, [&buffer](const auto& entry) { return HasBytesIn(entry.value, buffer); })) {
    const ReferencePointer<Buffer> written = Kestrel::GetBuffer(MediumBufferList);
    Write(*written);
    return buffer.Append(written->GetData(), written->GetLength());
  }
  const std::uint64_t before = buffer.GetLength();
  std::uint8_t* const target = buffer.Reserve(GetBinarySize());
  try {
    WriteTo(target);
  } catch (...) {
    buffer.Truncate(before);  // otherwise it would end in bytes of its last user
    throw;
  }
}

void ValueList::Read(Buffer& buffer) {
  Read(buffer, BlobBytes::kInBuffer);
}

/// Flattened, because reading an entry is many small functions, each of which would look at the buffer anew.
TARN_FLATTEN void ValueList::Read(Buffer& buffer, BlobBytes blobBytes) {
  if (buffer.ReadUInt32() != ValueListIdentifier) throw ValueListException("Wrong value list identifier");
  name_ = ReadName(buffer);
  const std::uint32_t count = buffer.ReadUInt32();
  // The count may be false, so beyond kFirstRoom entries no more memory is reserved than the unread bytes take. More
  // room is made only for entries that were read.
  const std::uint64_t room = std::max(kFirstRoom, buffer.GetUnreadLength() / sizeof(ValueListEntry));
  if (entries_.empty()) entries_.reserve(std::min<std::uint64_t>(count, room));
  for (std::uint32_t i = 0; i < count; ++i) entries_.emplace_back(buffer, blobBytes);
}

std::u16string ValueList::ToText() const {
  const ReferencePointer<Buffer> binary = GetBuffer(MediumBufferList);
  Write(*binary);
  const auto length = static_cast<std::size_t>(binary->GetLength());
  std::u16string text(Base64EncodedLength(length), u'\0');
  Base64EncodeTo(binary->GetData(), length, text.data());
  return text;
}

void ValueList::FromText(std::u16string_view text) {
  const ReferencePointer<Buffer> binary = Decoded(text);
  Clear();
  if (binary) Read(*binary, BlobBytes::kOwn);
}

void ReadWideString(Buffer& buffer, std::u16string& text) {
  const std::uint8_t tag = buffer.ReadUInt8();
  if (tag != vtWString) {
    text = ReadPayload(buffer, tag).To<std::u16string>();
    return;
  }
  const std::uint32_t length = buffer.ReadUInt32();
  if (length < sizeof(char16_t)) throw BufferException(kNotEnoughBytes);
  const std::uint8_t* const units = buffer.Take(length);
  text.resize(length / sizeof(char16_t) - 1);
  LoadLittleEndian(units, std::span(text));
}

}  // namespace Kestrel
