/// The cameras of a reply, straight from its text.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "protocol/camera_record.h"

namespace Tarn::CameraFinding {

/// The records under "CAMERAINFOLIST" of a reply of at least one byte: results and exceptions are those of DecodeReply
/// and Serialize. A reply in its usual form is decoded a few lines at a time, so beside the records it takes no memory
/// to speak of, however long it is.
std::vector<CameraRecord> ReadCameraReply(std::span<const std::uint8_t> reply);

}  // namespace Tarn::CameraFinding
