/// Framing of commands and replies on the live stream.
///
///     request := 0A 84 00 00, then the command's text form as UTF-16, without a NUL
///     reply   := one serialised variant, normally a vtWString holding the text form of the reply list;
///                its length counts the terminator: 0C L:u32 units[L / 2 - 1] 00 00
#pragma once

#include <cstdint>
#include <span>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

inline constexpr std::uint32_t kFinderRequestCode = 0x840A;

/// The request of a command, in a pooled buffer.
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const Kestrel::ValueList& command);
/// The command of a request; the other end's direction. Throws BufferException for a wrong code or a cut request.
void DecodeRequest(std::span<const std::uint8_t> request, Kestrel::ValueList& command);

/// Reads a reply of at least one byte into the list. Throws what variants and value lists throw.
void DecodeReply(std::span<const std::uint8_t> reply, Kestrel::ValueList& list);
/// The reply of a list; the other end's direction.
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeReply(const Kestrel::ValueList& list);

}  // namespace Tarn::CameraFinding
