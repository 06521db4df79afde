/// Takes credentials out of bytes that are recorded.
///
/// A credential is the value of an entry "LUN" or "LPD", user name and password of a camera, wherever such an entry
/// stands: in a pushed block, or in the base64 of a request or reply. It is found by the bytes of its name, not by
/// parsing, so that it is found in damaged messages as well. Each byte or unit of the value becomes "*"; terminators
/// and every length stay. The value that stands for "never supplied" is no secret and stays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "capture/format.h"

namespace capture {

/// The text form of a value list inside a request or reply: where it begins, and how wide a character is. Requests and
/// replies differ in what stands before.
struct EmbeddedText {
  std::size_t offset;
  std::size_t unitSize;  ///< bytes, 1 or 2; 0: there is no text
};
inline constexpr EmbeddedText kTextOfRequest = {4, 2};
/// Of a reply: by its type.
EmbeddedText TextOfReply(std::span<const std::uint8_t> reply);

/// Masks the credentials in a part of a frame, in place. Returns whether there were any. Throws std::bad_alloc.
bool RedactPart(PartKind kind, std::span<std::uint8_t> payload);
/// The same for all parts of a frame's body.
bool RedactBody(std::span<std::uint8_t> body);

/// Whether binary value lists may hold credentials; false is certain.
bool MayHoldCredentials(std::span<const std::uint8_t> bytes);
/// Masks credentials in binary value lists, as a block holds them. Returns whether there were any.
bool RedactBinary(std::span<std::uint8_t> bytes);
/// Masks credentials in a text form, in place. Returns whether there were any. Throws std::bad_alloc.
bool RedactText(std::span<std::uint8_t> message, EmbeddedText text);

}  // namespace capture
