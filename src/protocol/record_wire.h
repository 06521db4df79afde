/// Camera records and lists of texts inside value lists. record_format.h shows the form.
///
/// Writing  The canonical encoding.
/// Reading  Lists are appended to. A key that is absent leaves the member as it was; a value of another type is
///          converted. A list entry that is missing, not binary, shorter than 5 bytes or without the marker is ignored.
/// Errors   What ValueList::Read throws for a malformed element, and ValueList::Get for a value without a conversion;
///          BufferException for a list that ends inside its count. What was read before stays.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "protocol/camera_record.h"
#include "protocol/record_format.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

void WriteRecord(Kestrel::ValueList& list, const CameraRecord& record);
void ReadRecord(const Kestrel::ValueList& list, CameraRecord& record);

void WriteStringList(Kestrel::ValueList& list, std::string_view key, const TextList& texts);
void ReadStringList(const Kestrel::ValueList& list, std::string_view key, TextList& texts);

void WriteRecordList(Kestrel::ValueList& list, std::string_view key, const std::vector<CameraRecord>& records);
void ReadRecordList(const Kestrel::ValueList& list, std::string_view key, std::vector<CameraRecord>& records);

/// Reads one value list at the buffer's read position. Returns the first record of its "CAMERAINFOLIST", or a default
/// record where that list is empty or missing. A malformed later record throws as well, because the whole list is read.
CameraRecord ReadFirstRecord(Kestrel::Buffer& block);

}  // namespace Tarn::CameraFinding
