/// The payloads of the held types, in memory and on a stream.
///
///     type                    in memory             written to a stream     read from a stream
///     fixed size              bytes, little-endian  the same                the same
///     vtString                n characters, NUL     u32 n, n + 1 bytes      u32 L, L bytes
///     vtWString               n units, NUL          u32 2 n, 2 n + 2 bytes  u32 L, L bytes
///     vtBinaryData vtBlobPtr  n bytes               u32 n, n bytes          u32 n, n bytes
///     vtReferencePointer      the address, 8 bytes  the same                the same
///
/// A length in memory counts the terminator. So does a length that is read from a stream, but not one that is written
/// to a stream: both sides of the platform have it so. Readers ignore the value of the terminator. In a stream the text
/// "ab" is read from 03 00 00 00 61 62 00 and written as 02 00 00 00 61 62 00.
///
/// Errors  A failed read leaves the value as it was. A length without room for the terminator, or too few bytes:
///         BufferException kNotEnoughBytes in memory, IKestrelStreamException kReadFailed on a stream. The bytes of an
///         unreadable blob, and an address that no value holds: BufferException kInvalidPointerRequest.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/byte_order.h"
#include "valuelist/stream.h"
#include "valuelist/variant_held_types.h"

namespace Kestrel {

/// Bytes, or kVariableSize: then a length of 32 bits stands before the payload.
template <VariantHeld Held>
inline constexpr std::uint64_t kFixedSize = kVariantTypes[kVariantTag<Held>].fixedSize;

std::uint64_t GetSize(const WireValue auto& value) {
  return sizeof value;
}
std::uint64_t GetSize(const std::string& value);
std::uint64_t GetSize(const std::u16string& value);
std::uint64_t GetSize(const BinaryData& value);
std::uint64_t GetSize(const BlobPtr& value);
std::uint64_t GetSize(const VariantReferencePointer& value);

void WriteRaw(const WireValue auto& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, value);
}
void WriteRaw(const std::string& value, std::uint8_t* payload);
void WriteRaw(const std::u16string& value, std::uint8_t* payload);
void WriteRaw(const BinaryData& value, std::uint8_t* payload);
void WriteRaw(const BlobPtr& value, std::uint8_t* payload);
void WriteRaw(const VariantReferencePointer& value, std::uint8_t* payload);

/// Throws kNotEnoughBytes where n is less than the least size.
void CheckSize(std::uint64_t n, std::uint64_t least);
template <WireValue Fixed>
void ReadRaw(Fixed& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckSize(n, sizeof value);
  value = LoadLittleEndian<Fixed>(payload);
}
/// Any byte but 0 is true.
void ReadRaw(bool& value, const std::uint8_t* payload, std::uint64_t n);
void ReadRaw(std::string& value, const std::uint8_t* payload, std::uint64_t n);
void ReadRaw(std::u16string& value, const std::uint8_t* payload, std::uint64_t n);
void ReadRaw(BinaryData& value, const std::uint8_t* payload, std::uint64_t n);
/// The blob points into the payload.
void ReadRaw(BlobPtr& value, const std::uint8_t* payload, std::uint64_t n);
void ReadRaw(VariantReferencePointer& value, const std::uint8_t* payload, std::uint64_t n);

/// This library never calls it; the table of operations (variant_traits.h) needs it.
template <VariantHeld Held>
void WriteToStream(const Held& value, IKestrelStream& stream) {
  std::vector<std::uint8_t> payload(GetSize(value));
  WriteRaw(value, payload.data());
  if constexpr (kFixedSize<Held> == kVariableSize) {
    std::uint8_t length[sizeof(std::uint32_t)];
    StoreLittleEndian(length, static_cast<std::uint32_t>(payload.size() - GetSize(Held())));
    stream.Write(length, sizeof length);
  }
  stream.Write(payload.data(), payload.size());
}

/// From a RawReader, not from any IKestrelStream, because only a RawReader can tell whether the bytes are there before
/// room is made for them. A blob gets a shared block of its own.
template <VariantHeld Held>
void ReadFromStream(Held& value, RawReader& stream) {
  std::uint64_t length = kFixedSize<Held>;
  if (length == kVariableSize) length = LoadLittleEndian<std::uint32_t>(stream.Take(sizeof(std::uint32_t)));
  Held read{};
  if (length < GetSize(read)) throw IKestrelStream::IKestrelStreamException(kReadFailed);
  ReadRaw(read, stream.Take(length), length);
  if constexpr (std::is_same_v<Held, BlobPtr>) read.OwnBytes();
  value = std::move(read);
}

}  // namespace Kestrel
