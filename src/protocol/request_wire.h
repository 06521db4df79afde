/// Framing of commands and replies on the live stream. Both carry a value list in its text form (value_list.h).
///
///     request := code:u32 units                  the code is 0x840A; the text has no terminator
///     reply   := variant                         one serialised variant of any type; its text is the list's text form
///
/// The request of the command without a payload (13), byte by byte:
///
///     0A 84 00 00                                the code
///     56 00 6B 00 78 00 4A 00 55 00 77 00 ...    "VkxJUwsBAAAAAAEAAAALBAAAAENNRAAGDQAAAA==", UTF-16
///
/// A reply with an empty list of cameras:
///
///     0C 82 00 00 00                             vtWString of 130 bytes, terminator included
///     56 00 6B 00 78 00 4A 00 55 00 77 00 ...    "VkxJUwsBAAAAAAEAAAALDwAAAENBTUVSQUlORk9MSVNUAA0IAAAA/0VDQgAAAAA="
///     00 00                                      the terminator
#pragma once

#include <cstdint>
#include <span>

#include "base/reference_counting.h"
#include "protocol/finder_messages.h"
#include "valuelist/buffer.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

inline constexpr std::uint32_t kFinderRequestCode = 0x840A;

/// The request of a command.
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const Kestrel::ValueList& command);
/// The request of a message that the library sends. The bytes are those of the list that Serialize writes, but no list
/// is made: the names and the numbers of entries are constants, so that only the values are copied.
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const MacAddressMessage& message);
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const ListFoundMessage& message);
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const InfoByIpMessage& message);
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const BareMessage& message);
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const NetworkCommand& message);

/// The other end's direction. Throws BufferException for a wrong code or a cut request, else what ValueList throws.
void DecodeRequest(std::span<const std::uint8_t> request, Kestrel::ValueList& command);

/// Replaces the list by that of the reply. Requires at least one byte. Throws what variants and value lists throw.
void DecodeReply(std::span<const std::uint8_t> reply, Kestrel::ValueList& list);
/// The other end's direction.
Kestrel::ReferencePointer<Kestrel::Buffer> EncodeReply(const Kestrel::ValueList& list);

}  // namespace Tarn::CameraFinding
