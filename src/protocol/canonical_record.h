/// The canonical encoding of records and lists (record_format.h), written and read without a value list in between:
/// several times faster, and without an allocation for each entry.
///
/// Writing gives the bytes that ValueList::Write would give. Reading takes the canonical encoding only. It refuses
/// everything else, damaged or merely unusual; then the caller reads the same bytes through ValueList, which alone
/// decides what is accepted and which exception is thrown.
///
/// An element is a record of a list of records, or a text of a list of texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "protocol/camera_record.h"

namespace Tarn::CameraFinding {

/// Reads the element at the beginning of the bytes. Returns its size in bytes; 0 where it is not canonical, and the
/// element's contents are unspecified then.
/// Requires  A new element, because reading appends to its lists.
std::size_t DecodeElement(std::span<const std::uint8_t> bytes, CameraRecord& record);
std::size_t DecodeElement(std::span<const std::uint8_t> bytes, std::string& text);

/// The fewest bytes of a canonical element. Readers make room beforehand for no more elements than the unread bytes
/// divided by this, so that a false count reserves less than twice the size of the message. Elements of another form
/// can be smaller; for those, room grows as they are read.
template <class Element>
inline constexpr std::size_t kSmallestElement = 0;
template <>
inline constexpr std::size_t kSmallestElement<CameraRecord> = 320;
template <>
inline constexpr std::size_t kSmallestElement<std::string> = 29;

/// What stands before the first record of a value list whose last entry is "CAMERAINFOLIST", alone or behind "CMD".
struct CameraListHead {
  std::size_t sizeInBytes;         ///< of the head itself
  std::uint32_t recordCount;       ///< as claimed; nothing proves it yet
  std::size_t recordsSizeInBytes;  ///< of all records together; as claimed
};
/// The head at the beginning of the bytes; nothing where it is not canonical.
std::optional<CameraListHead> DecodeCameraListHead(std::span<const std::uint8_t> bytes);

/// Size in bytes of the record's 21 entries, without the head of a value list before them.
std::size_t EncodedEntriesSize(const CameraRecord& record);
/// Writes exactly EncodedEntriesSize bytes and returns their end.
std::uint8_t* EncodeEntries(const CameraRecord& record, std::uint8_t* target);

/// Size in bytes of the list, from its marker on.
std::size_t EncodedListSize(const std::vector<CameraRecord>& records);
std::size_t EncodedListSize(const TextList& texts);
/// Writes exactly EncodedListSize bytes.
void EncodeList(const std::vector<CameraRecord>& records, std::uint8_t* target);
void EncodeList(const TextList& texts, std::uint8_t* target);

}  // namespace Tarn::CameraFinding
