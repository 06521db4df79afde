/// Parses a pushed block and calls the wizard with what it holds. block_format.h shows the format.
#pragma once

#include <atomic>
#include <cstdint>

#include "tarn/camera_finding.h"
#include "valuelist/buffer.h"

namespace Tarn::CameraFinding {

/// Where a receiver keeps the wizard's callback: null once the stream has let go. The parser reads it just before it
/// calls the wizard, because it can become null while a block is parsed.
using CurrentWizard = std::atomic<INewCameraDataCallback*>;

/// Parses the block from its read position; calls the wizard at most once, and not at all while `wizard` is null. A
/// message type outside 1 to 8 is ignored.
///
/// Requires  The caller holds its own reference on the wizard's callback until this returns.
/// Errors    Throws nothing. A damaged block and an exception of the wizard end the block silently; only an exception
///           out of ValuesReceived is reported to the debugger.
void ParseFinderBlock(const CurrentWizard& wizard, Kestrel::Buffer& block, std::uint32_t messageType) noexcept;

}  // namespace Tarn::CameraFinding
