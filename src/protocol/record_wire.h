/// Camera records and lists of texts inside value lists.
///
/// A record is 21 entries, in this order:
///
///     LUN LPD text  CTT u8  MAC NIP text  NI2 texts  IP SIP GIP text  DHC u8  ICB GCB RBL PCL flag
///     DCV u32  CVT u64 (tag 8)  PLN texts  PDN FVN SER MDL text        "MDL" comes last
///
/// text: vtString, UTF-8; u8: vtUChar; flag: vtBool; u32: vtUInt. A list of texts or of records is one vtBinaryData
/// entry:
///
///     list := FF 45 43 42  count:u32  element[count]         each element a value list, nothing between them
///
/// An element of a list of texts holds one entry "mac", whatever the list is; one of a list of records a record.
///
/// Reading  A key that is absent leaves the member as it was; a list entry that is missing, not binary, shorter than 5
///          bytes or without the marker is ignored. Lists are appended to. Malformed elements throw what
///          ValueList::Read throws; elements read before stay.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/camera_record.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

/// The bytes FF 45 43 42.
inline constexpr std::uint32_t ListMarker = 0x424345FF;
/// Entry name of every element of a list of texts.
inline constexpr std::string_view kListElementKey = "mac";
inline constexpr std::string_view kCameraInfoListKey = "CAMERAINFOLIST";

void WriteRecord(Kestrel::ValueList& list, const CameraRecord& record);
void ReadRecord(const Kestrel::ValueList& list, CameraRecord& record);

void WriteStringList(Kestrel::ValueList& list, std::string_view key, const std::vector<std::string>& texts);
void ReadStringList(const Kestrel::ValueList& list, std::string_view key, std::vector<std::string>& texts);

void WriteRecordList(Kestrel::ValueList& list, std::string_view key, const std::vector<CameraRecord>& records);
void ReadRecordList(const Kestrel::ValueList& list, std::string_view key, std::vector<CameraRecord>& records);

/// Reads one value list at the buffer's read position and returns the first record of its "CAMERAINFOLIST", or a
/// default record where that is empty or missing. The whole list is read: a malformed later record throws too.
CameraRecord ReadFirstRecord(Kestrel::Buffer& block);

}  // namespace Tarn::CameraFinding
