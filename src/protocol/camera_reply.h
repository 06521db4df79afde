/// Reads the cameras of a reply to "ListFoundCameras", which may be long.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "protocol/camera_record.h"

namespace Tarn::CameraFinding {

/// The records under "CAMERAINFOLIST", in order. The result, and any exception, is that of DecodeReply and Serialize.
///
/// A canonical reply (record_format.h) whose records have at most 8 KiB each is decoded a few lines at a time, so that
/// it takes a fixed 35 KiB beside the records, however long it is. Any other reply is decoded as a whole, which takes
/// about twice its size, or five times that of a narrow text.
///
/// Requires  At least one byte.
std::vector<CameraRecord> ReadCameraReply(std::span<const std::uint8_t> reply);

}  // namespace Tarn::CameraFinding
