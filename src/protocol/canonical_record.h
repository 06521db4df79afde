/// Records and lists to and from their wire form, with no value list in between. record_wire.h shows the form.
///
/// Encoding gives the bytes that ValueList::Write gives for the list that WriteRecord fills. Decoding takes that form
/// only: every key in its place, every value of its own type. It says no to everything else, the damaged and the merely
/// unusual, and the caller asks ValueList, which alone decides what is accepted and how it is refused.
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

/// Reads the element at the beginning of the bytes. Returns how many bytes it took; 0 where they are not in the form
/// above, and the element, which must be fresh, holds anything then.
std::size_t DecodeElement(std::span<const std::uint8_t> bytes, CameraRecord& record);
std::size_t DecodeElement(std::span<const std::uint8_t> bytes, std::string& text);

/// "VLIS", a name and a count take this much at least, so no bytes hold more elements than this allows, however many
/// are claimed.
inline constexpr std::size_t kSmallestElement = 10;

/// A value list whose one entry is "CAMERAINFOLIST", up to its first record.
struct CameraListHead {
  std::size_t size;           ///< bytes of the head itself
  std::uint32_t recordCount;  ///< not proven by any bytes yet
  std::size_t recordsSize;    ///< bytes of all records together; likewise
};
/// The head at the beginning of the bytes; nothing where they are not in that form.
std::optional<CameraListHead> DecodeCameraListHead(std::span<const std::uint8_t> bytes);

/// Bytes of the block that holds the list.
std::size_t EncodedListSize(const std::vector<CameraRecord>& records);
std::size_t EncodedListSize(const std::vector<std::string>& texts);
/// Writes that many bytes.
void EncodeList(const std::vector<CameraRecord>& records, std::uint8_t* target);
void EncodeList(const std::vector<std::string>& texts, std::uint8_t* target);

}  // namespace Tarn::CameraFinding
