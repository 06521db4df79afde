#include "valuelist/variant_wire.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "base/exceptions.h"

namespace Kestrel {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);
constexpr std::size_t kSlice = 0x10000;

void WriteLength(IKestrelStream& stream, std::uint64_t length) {
  std::uint8_t bytes[sizeof(std::uint32_t)];
  StoreLittleEndian(bytes, static_cast<std::uint32_t>(length));
  stream.Write(bytes, sizeof bytes);
}

/// Throws where the length has no room for the terminator.
std::uint32_t ReadLength(IKestrelStream& stream, std::size_t terminator) {
  std::uint8_t bytes[sizeof(std::uint32_t)];
  stream.Read(bytes, sizeof bytes);
  const auto length = LoadLittleEndian<std::uint32_t>(bytes);
  if (length < terminator) throw IKestrelStream::IKestrelStreamException(kReadFailed);
  return length;
}

/// Reads n bytes into the room that makeRoom(n) gives, which is asked for only when the bytes are known to be there: a
/// few hostile bytes must not cost gigabytes.
template <class MakeRoom>
void ReadBytes(IKestrelStream& stream, std::uint32_t n, MakeRoom makeRoom) {
  // The one stream of this library, over a reply in memory, can tell: its bytes are copied once.
  if (const auto* const reader = dynamic_cast<const RawReader*>(&stream)) {
    if (n > reader->GetRemaining()) throw IKestrelStream::IKestrelStreamException(kReadFailed);
    return stream.Read(makeRoom(n), n);
  }
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < n) {
    const std::size_t known = bytes.size();
    bytes.resize(std::min<std::size_t>(n, known + kSlice));
    stream.Read(bytes.data() + known, bytes.size() - known);
  }
  if (void* const room = makeRoom(n); n > 0) std::memcpy(room, bytes.data(), n);
}

void WriteBytes(std::span<const std::uint8_t> bytes, std::uint8_t* payload) {
  std::ranges::copy(bytes, payload);
}

void WriteBytes(std::span<const std::uint8_t> bytes, IKestrelStream& stream) {
  WriteLength(stream, bytes.size());
  stream.Write(bytes.data(), bytes.size());
}

}  // namespace

void CheckPayloadSize(std::uint64_t n, std::uint64_t least) {
  if (n < least) throw BufferException(kNotEnoughBytes);
}

std::uint64_t PayloadSize(const std::string& value) {
  return value.size() + 1;
}
std::uint64_t PayloadSize(const std::u16string& value) {
  return (value.size() + 1) * kUnit;
}
std::uint64_t PayloadSize(const BinaryData& value) {
  return value.GetBytes().size();
}
std::uint64_t PayloadSize(const BlobPtr& value) {
  return value.GetSize();
}
std::uint64_t PayloadSize(const VariantReferencePointer&) {
  return sizeof(std::uint64_t);
}

void WritePayload(const std::string& value, std::uint8_t* payload) {
  std::memcpy(payload, value.c_str(), value.size() + 1);
}
void WritePayload(const std::u16string& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, std::span(value.c_str(), value.size() + 1));
}
void WritePayload(const BinaryData& value, std::uint8_t* payload) {
  WriteBytes(value.GetBytes(), payload);
}
void WritePayload(const BlobPtr& value, std::uint8_t* payload) {
  WriteBytes(value.GetBytes(), payload);
}
void WritePayload(const VariantReferencePointer& value, std::uint8_t* payload) {
  WritePayload(value.GetAddress(), payload);
}

void ReadPayload(bool& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckPayloadSize(n, sizeof value);
  value = *payload != 0;
}

void ReadPayload(std::string& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckPayloadSize(n, 1);
  value.assign(reinterpret_cast<const char*>(payload), static_cast<std::size_t>(n) - 1);
}

void ReadPayload(std::u16string& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckPayloadSize(n, kUnit);
  value.resize(static_cast<std::size_t>(n) / kUnit - 1);
  LoadLittleEndian(payload, std::span(value));
}

void ReadPayload(BinaryData& value, const std::uint8_t* payload, std::uint64_t n) {
  value.Assign(payload, n);
}

void ReadPayload(BlobPtr& value, const std::uint8_t* payload, std::uint64_t n) {
  value.Refer(payload, n);
}

void ReadPayload(VariantReferencePointer& value, const std::uint8_t* payload, std::uint64_t n) {
  std::uint64_t address = 0;
  ReadPayload(address, payload, n);
  value = VariantReferencePointer::FromAddress(address);
}

void WriteToStream(const std::string& value, IKestrelStream& stream) {
  WriteLength(stream, value.size());
  stream.Write(value.c_str(), value.size() + 1);
}
void WriteToStream(const std::u16string& value, IKestrelStream& stream) {
  WriteLength(stream, value.size() * kUnit);
  stream.Write(value.c_str(), (value.size() + 1) * kUnit);
}
void WriteToStream(const BinaryData& value, IKestrelStream& stream) {
  WriteBytes(value.GetBytes(), stream);
}
void WriteToStream(const BlobPtr& value, IKestrelStream& stream) {
  WriteBytes(value.GetBytes(), stream);
}

void ReadFromStream(std::string& value, IKestrelStream& stream) {
  const std::uint32_t length = ReadLength(stream, 1);
  std::string text;
  ReadBytes(stream, length, [&text](std::size_t n) {
    text.resize(n);
    return text.data();
  });
  text.pop_back();
  value = std::move(text);
}

void ReadFromStream(std::u16string& value, IKestrelStream& stream) {
  const std::uint32_t length = ReadLength(stream, kUnit);
  std::u16string text;
  ReadBytes(stream, length, [&text](std::size_t n) {
    text.resize((n + 1) / kUnit);  // an odd length ends in half a unit, which is read and dropped
    return text.data();
  });
  text.resize(length / kUnit - 1);
  value = std::move(text);
}

void ReadFromStream(BinaryData& value, IKestrelStream& stream) {
  const std::uint32_t length = ReadLength(stream, 0);
  BinaryData bytes;
  ReadBytes(stream, length, [&bytes](std::size_t n) { return bytes.AssignZeros(n); });
  value = std::move(bytes);
}

void ReadFromStream(BlobPtr& value, IKestrelStream& stream) {
  const std::uint32_t length = ReadLength(stream, 0);
  BlobPtr blob;
  ReadBytes(stream, length, [&blob](std::size_t n) {
    blob = BlobPtr::AllocateShared(n);
    return blob.GetAddress();
  });
  value = std::move(blob);
}

}  // namespace Kestrel
