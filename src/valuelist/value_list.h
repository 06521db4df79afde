/// Kestrel::ValueList: a named, ordered list of (name, Variant) entries, and its binary form.
///
/// Wire form; little-endian, nothing aligned, no total length, no end mark: only decoding finds the end.
///
///     list   := "VLIS" name:record count:u32 (name:record value:record)[count]
///     record := tag:u8 [length:u32] payload       a length only for tags 11..14, see kVariantTypes
///
///     56 4C 49 53                   "VLIS"
///     0B 01 00 00 00 00             list name: vtString, 1 byte, ""
///     01 00 00 00                   one entry
///     0B 04 00 00 00 43 4D 44 00    its name: vtString, 4 bytes, "CMD"
///     06 06 00 00 00                its value: vtUInt 6
///
/// The writer always writes names as vtString; the reader takes any type and uses its text. A 64-bit unsigned value is
/// written with tag 8 and comes back as vtInt64 with the same bits.
///
/// Text form: base64 of the binary form, in UTF-16.
///
/// Ownership  Values are copied in and out; only GetBinaryData hands out a reference to the entry's own buffer.
/// Threads    No lock inside; one thread at a time uses a list.
/// Errors     Read: ValueListException "Wrong value list identifier", BufferException where bytes are missing,
///            VariantInvalidTypeException for a tag above 20. The name and the entries read so far stay; the caller
///            discards the list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"
#include "valuelist/variant.h"

namespace Kestrel {

/// "VLIS", read as a little-endian number.
inline constexpr std::uint32_t ValueListIdentifier = 0x53494C56;

/// Where the bytes of a blob that is read stay: in the buffer it is read from, or in a block of its own.
enum class BlobBytes { kInBuffer, kOwn };

struct ValueListEntry {
  ValueListEntry(std::string_view entryName, Variant&& entryValue) : name(entryName), value(std::move(entryValue)) {}
  /// Decodes one entry at the buffer's read position.
  ValueListEntry(Buffer& buffer, BlobBytes blobBytes);

  std::string name;
  Variant value;
};

/// What Add takes: narrow text and the numbers of the messages. An int is none of them, so that a plain 6 is not
/// written as vtInt where the other side expects vtUInt.
using MessageTypes = std::tuple<bool, std::uint8_t, std::uint32_t, std::uint64_t, std::string>;
template <class T>
concept MessageValue = kPositionIn<VariantHolding<T>, MessageTypes> < std::tuple_size_v<MessageTypes>;

class ValueList {
 public:
  const std::string& GetName() const { return name_; }
  void SetName(std::string_view name) { name_ = name; }
  const std::vector<ValueListEntry>& GetEntries() const { return entries_; }

  /// Makes room for that many entries more.
  void Reserve(std::size_t more) { entries_.reserve(entries_.size() + more); }
  /// Each appends one entry; a name may occur more than once.
  void Add(std::string_view name, MessageValue auto&& value) {
    AddVariant(name, Variant(std::forward<decltype(value)>(value)));
  }
  void AddVariant(std::string_view name, Variant value);
  /// A copy of the buffer's bytes; a null or empty buffer gives a value without a buffer.
  void AddBinaryData(std::string_view name, const ReferencePointer<Buffer>& buffer);

  /// The first entry of exactly that name, converted to the output's type. False where there is none: the output stays
  /// as it is. Throws what the conversion throws, with the output as it was.
  template <VariantTarget Target>
  bool Get(std::string_view name, Target& value) const {
    const Variant* const found = Find(name);
    if (found) value = found->To<Target>();
    return found != nullptr;
  }
  /// A reference on the own buffer of the first entry of that name, null where its type is not vtBinaryData or it has
  /// no bytes; the output stays as it is where there is no such entry.
  void GetBinaryData(std::string_view name, ReferencePointer<Buffer>& value) const;
  /// Null where there is no entry of that name.
  const Variant* Find(std::string_view name) const;

  /// Removes the entries; the name stays.
  void Clear() { entries_.clear(); }

  /// Appends the binary form to the buffer.
  void Write(Buffer& buffer) const;
  /// Decodes one binary form at the buffer's read position: replaces the name, appends the entries. A blob points into
  /// the buffer.
  void Read(Buffer& buffer);

  std::u16string ToText() const;
  /// Clears the list, then reads the text form; an empty text leaves it empty. What stands behind a character that is
  /// not base64 is ignored.
  void FromText(std::u16string_view text);

 private:
  void Read(Buffer& buffer, BlobBytes blobBytes);

  std::string name_;
  std::vector<ValueListEntry> entries_;
};

/// Reads one variant record as wide text: a vtWString as it stands, any other type by its conversion.
void ReadWideString(Buffer& buffer, std::u16string& text);

}  // namespace Kestrel
