/// Kestrel::ValueList: a named, ordered list of (name, Variant) entries, and its binary form.
///
/// Wire form, little-endian. Nothing is aligned, and there is neither a total length nor an end mark, so only decoding
/// finds the end.
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
/// This is the canonical encoding: the writer writes every name as vtString with its terminator. The reader takes a
/// name of any type and uses its text, and ignores the byte in the place of a terminator. A 64-bit unsigned value is
/// written with tag 8 and comes back as vtInt64 with the same bits.
///
/// Text form: base64 of the binary form, in UTF-16, a line break after every 76 characters. The list above is
/// "VkxJUwsBAAAAAAEAAAALBAAAAENNRAAGBgAAAA==".
///
/// Ownership  Values are copied in and out; only GetBinaryData hands out a reference to the entry's own buffer.
/// Threads    No lock inside; one thread at a time uses a list.
/// Errors     Read: ValueListException "Wrong value list identifier", BufferException where bytes are missing or cannot
///            be a value, VariantInvalidTypeException for a tag above 20, and what the text of a name throws
///            (variant_text.h). The name and the entries read so far stay; the caller discards the list.
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

/// Whether a blob points into the buffer it is read from, or gets a copy of its bytes.
enum class BlobBytes { kInBuffer, kOwn };

struct ValueListEntry {
  /// The value is what a variant is made from, or a variant.
  template <class Source>
  ValueListEntry(std::string_view entryName, Source&& source) : name(entryName), value(std::forward<Source>(source)) {}
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

  /// Makes room for so many more entries.
  void Reserve(std::size_t more) { entries_.reserve(entries_.size() + more); }
  /// Appends an entry; entries may have the same name.
  void Add(std::string_view name, MessageValue auto&& value) {
    entries_.emplace_back(name, std::forward<decltype(value)>(value));
  }
  void AddVariant(std::string_view name, Variant value) { entries_.emplace_back(name, std::move(value)); }
  /// Appends a vtBinaryData with a copy of the buffer's bytes, or without a buffer where it is null or empty.
  void AddBinaryData(std::string_view name, const ReferencePointer<Buffer>& buffer);

  /// The first entry of exactly that name, byte for byte, converted to the type of the output. False where there is
  /// none. Then, and where the conversion throws (variant_text.h), the output stays as it is.
  template <VariantTarget Target>
  bool Get(std::string_view name, Target& value) const {
    const Variant* const found = Find(name);
    if (found) found->AssignTo(value);
    return found != nullptr;
  }
  /// A reference on the own buffer of the first entry of that name, null where its type is not vtBinaryData or it has
  /// no bytes; the output stays as it is where there is no such entry.
  void GetBinaryData(std::string_view name, ReferencePointer<Buffer>& value) const;
  /// The value of the first entry of that name, valid until the list changes; null where there is none.
  const Variant* Find(std::string_view name) const;

  /// Removes the entries; the name stays.
  void Clear() { entries_.clear(); }

  /// Appends the binary form to the buffer, which may be one that values of this list point into. Throws
  /// BufferException kInvalidPointerRequest for a blob that was made from text; the buffer then stays as it was.
  void Write(Buffer& buffer) const;
  /// Size in bytes of the binary form. Throws as Write.
  std::uint64_t GetBinarySize() const;
  /// Writes exactly GetBinarySize bytes. Throws as Write. Requires a target that no value of this list points into.
  void WriteTo(std::uint8_t* target) const;
  /// Decodes one binary form at the buffer's read position: replaces the name and appends the entries to those that the
  /// list has. What follows in the buffer stays unread. A blob points into the buffer, so it is valid while the buffer
  /// lives unchanged.
  void Read(Buffer& buffer);

  std::u16string ToText() const;
  /// Clears the list, then reads the text form; an empty text leaves the list empty. Line breaks are skipped; any other
  /// character that is not base64 ends the text. Blobs own their bytes. Errors as Read, and SystemException where text
  /// outside ASCII cannot be converted.
  void FromText(std::u16string_view text);

 private:
  void Read(Buffer& buffer, BlobBytes blobBytes);

  std::string name_;
  std::vector<ValueListEntry> entries_;
};

/// Reads one variant record as wide text: a vtWString as it stands, any other type converted. Throws as
/// ValueList::Read; the text stays as it is then. "ab" as vtWString is 0C 06 00 00 00 61 00 62 00 00 00.
void ReadWideString(Buffer& buffer, std::u16string& text);

}  // namespace Kestrel
