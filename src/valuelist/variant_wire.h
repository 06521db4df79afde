/// The payloads of the held types, in memory and on a stream.
///
///     type                    in memory             written to a stream     read from a stream
///     fixed size              bytes, little-endian  the same                the same
///     vtString                n characters, NUL     u32 n, n + 1 bytes      u32 L, L bytes
///     vtWString               n units, NUL          u32 2 n, 2 n + 2 bytes  u32 L, L bytes
///     vtBinaryData vtBlobPtr  n bytes               u32 n, n bytes          u32 n, n bytes
///     vtReferencePointer      the address, 8 bytes  the same                the same
///
/// The length that is written to a stream leaves the terminator out, the one that is read from a stream counts it, as
/// in memory: that is how the two sides talk. Readers take the bytes before the terminator and do not look at it.
///
/// Errors  A failed read leaves the value as it was. A length without room for the terminator, or a fixed payload that
///         is too short: BufferException kNotEnoughBytes in memory, IKestrelStreamException on a stream. The bytes of a
///         blob from text and an unknown address: BufferException kInvalidPointerRequest.
#pragma once

#include <cstdint>
#include <string>

#include "base/byte_order.h"
#include "valuelist/buffer.h"
#include "valuelist/stream.h"
#include "valuelist/variant_payloads.h"

namespace Kestrel {

std::uint64_t PayloadSize(const WireValue auto& value) {
  return sizeof value;
}
std::uint64_t PayloadSize(const std::string& value);
std::uint64_t PayloadSize(const std::u16string& value);
std::uint64_t PayloadSize(const BinaryData& value);
std::uint64_t PayloadSize(const BlobPtr& value);
std::uint64_t PayloadSize(const VariantReferencePointer& value);

void WritePayload(const WireValue auto& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, value);
}
void WritePayload(const std::string& value, std::uint8_t* payload);
void WritePayload(const std::u16string& value, std::uint8_t* payload);
void WritePayload(const BinaryData& value, std::uint8_t* payload);
void WritePayload(const BlobPtr& value, std::uint8_t* payload);
void WritePayload(const VariantReferencePointer& value, std::uint8_t* payload);

void CheckPayloadSize(std::uint64_t n, std::uint64_t least);

template <WireValue Fixed>
void ReadPayload(Fixed& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckPayloadSize(n, sizeof value);
  value = LoadLittleEndian<Fixed>(payload);
}
/// Any byte but 0 is true.
void ReadPayload(bool& value, const std::uint8_t* payload, std::uint64_t n);
void ReadPayload(std::string& value, const std::uint8_t* payload, std::uint64_t n);
void ReadPayload(std::u16string& value, const std::uint8_t* payload, std::uint64_t n);
void ReadPayload(BinaryData& value, const std::uint8_t* payload, std::uint64_t n);
/// Points into the payload.
void ReadPayload(BlobPtr& value, const std::uint8_t* payload, std::uint64_t n);
void ReadPayload(VariantReferencePointer& value, const std::uint8_t* payload, std::uint64_t n);

template <class Fixed>
void WriteToStream(const Fixed& value, IKestrelStream& stream) {
  std::uint8_t payload[sizeof value];
  WritePayload(value, payload);
  stream.Write(payload, sizeof payload);
}
void WriteToStream(const std::string& value, IKestrelStream& stream);
void WriteToStream(const std::u16string& value, IKestrelStream& stream);
void WriteToStream(const BinaryData& value, IKestrelStream& stream);
void WriteToStream(const BlobPtr& value, IKestrelStream& stream);

template <class Fixed>
void ReadFromStream(Fixed& value, IKestrelStream& stream) {
  std::uint8_t payload[sizeof value];
  stream.Read(payload, sizeof payload);
  ReadPayload(value, payload, sizeof payload);
}
void ReadFromStream(std::string& value, IKestrelStream& stream);
void ReadFromStream(std::u16string& value, IKestrelStream& stream);
void ReadFromStream(BinaryData& value, IKestrelStream& stream);
/// The bytes lie in a new shared block.
void ReadFromStream(BlobPtr& value, IKestrelStream& stream);

}  // namespace Kestrel
