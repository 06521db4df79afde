/// Parses a pushed block and calls the wizard with what it holds. block_format.h shows the format.
#pragma once

#include <atomic>
#include <cstdint>

#include "tarn/camera_finding.h"
#include "valuelist/buffer.h"

namespace Tarn::CameraFinding {

/// Where a receiver keeps the wizard's callback: null once the stream has let go. The parser reads it again at each
/// call, because it can become null while a block is parsed.
using CurrentWizard = std::atomic<INewCameraDataCallback*>;

/// Parses the block from its read position; calls the wizard at most once, and not at all while `wizard` is null.
///
/// Requires  Whoever calls this holds a reference on the wizard's callback of its own.
/// Errors    Throws nothing. A damaged block and an exception of the wizard end the block silently; only an exception
///           out of ValuesReceived is reported to the debugger.
void ParseFinderBlock(const CurrentWizard& wizard, Kestrel::Buffer& block, std::uint32_t messageType) noexcept;

}  // namespace Tarn::CameraFinding
