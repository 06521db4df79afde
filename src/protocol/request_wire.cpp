#include "protocol/request_wire.h"

#include <string>

#include "base/base64.h"
#include "base/byte_order.h"
#include "base/exceptions.h"
#include "protocol/canonical_bytes.h"
#include "protocol/canonical_record.h"
#include "protocol/record_format.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/stream.h"
#include "valuelist/variant.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);
constexpr std::size_t kCodeSize = sizeof kFinderRequestCode;
static_assert(kCodeSize % alignof(char16_t) == 0, "the text is written where it stands in the request");

/// The request of a command whose binary form has that size and is written by write(target).
template <class Write>
Kestrel::ReferencePointer<Kestrel::Buffer> RequestOf(std::size_t binarySize, Write write) {
  const std::size_t requestSize = kCodeSize + kUnit * Kestrel::Base64EncodedLength(binarySize);
  auto request = Kestrel::GetBuffer(Kestrel::BufferPool::ListFor(requestSize + binarySize));
  std::uint8_t* const bytes = request->Reserve(requestSize + binarySize);
  std::uint8_t* const binary = bytes + requestSize;  // behind the request, so that one buffer is enough
  write(binary);
  Kestrel::StoreLittleEndian(bytes, kFinderRequestCode);
  Kestrel::Base64EncodeTo(binary, binarySize, reinterpret_cast<char16_t*>(bytes + kCodeSize));
  request->Truncate(requestSize);
  return request;
}

/// A command up to its first entry after "CMD".
constexpr FixedBytes CommandHead(FinderCommand command, std::uint32_t payloadEntries) {
  return ValueListHead(1 + payloadEntries).Entry(kCommandKey, Kestrel::vtUInt).Number(command);
}

constexpr FixedBytes kSendMacAddress = CommandHead(fcSendMacAddress, 1).Entry(kMacKey, Kestrel::vtString);
constexpr FixedBytes kListFoundCameras =
    CommandHead(fcListFoundCameras, 1).Entry(kResendKey, Kestrel::vtBool).Byte(true);
constexpr FixedBytes kGetInfoByIp = CommandHead(fcGetInfoByIp, 1).Entry(kInfoByIpKey, Kestrel::vtString);
constexpr FixedBytes kBare = CommandHead(fcBare, 0);
constexpr FixedBytes kSetNetwork =
    CommandHead(fcSetNetwork, 1 + kRecordKeys.size()).Entry(kNetworkTypeKey, Kestrel::vtUInt);

/// The request of a command that is its fixed bytes and the values behind them.
template <const FixedBytes& fixed, class... Values>
Kestrel::ReferencePointer<Kestrel::Buffer> RequestOf(const Values&... values) {
  return RequestOf((fixed.size + ... + ValueSize(values)), [&](std::uint8_t* target) {
    CanonicalWriter writer(target);
    writer.Put<fixed>();
    (writer.PutValue(values), ...);
  });
}

}  // namespace

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const Kestrel::ValueList& command) {
  return RequestOf(command.GetBinarySize(), [&command](std::uint8_t* target) { command.WriteTo(target); });
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const MacAddressMessage& message) {
  return RequestOf<kSendMacAddress>(message.mac);
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const ListFoundMessage&) {
  return RequestOf<kListFoundCameras>();
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const InfoByIpMessage& message) {
  return RequestOf<kGetInfoByIp>(message.ip);
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const BareMessage&) {
  return RequestOf<kBare>();
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const NetworkCommand& message) {
  const std::size_t headSize = kSetNetwork.size + ValueSize(message.networkCommandType);
  return RequestOf(headSize + EncodedEntriesSize(message), [&](std::uint8_t* target) {
    CanonicalWriter writer(target);
    writer.Put<kSetNetwork>();
    writer.PutValue(message.networkCommandType);
    EncodeEntries(message, target + headSize);
  });
}

void DecodeRequest(std::span<const std::uint8_t> request, Kestrel::ValueList& command) {
  if (request.size() < kCodeSize || request.size() % kUnit != 0)
    throw Kestrel::BufferException(Kestrel::kNotEnoughBytes);
  if (Kestrel::LoadLittleEndian<std::uint32_t>(request.data()) != kFinderRequestCode)
    throw Kestrel::BufferException("not a finder request");
  const auto units = request.subspan(kCodeSize);
  std::u16string text(units.size() / kUnit, u'\0');
  Kestrel::LoadLittleEndian(units.data(), std::span(text));
  command.FromText(text);
}

void DecodeReply(std::span<const std::uint8_t> reply, Kestrel::ValueList& list) {
  Kestrel::RawReader reader(reply.data(), reply.size());
  std::uint8_t tag = 0;
  reader.Read(&tag, sizeof tag);
  Kestrel::Variant value = Kestrel::Variant::Create(tag);
  value.ReadFromStream(reader);
  if (const auto* const text = value.GetIf<std::u16string>())
    list.FromText(*text);
  else
    list.FromText(value.To<std::u16string>());
}

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeReply(const Kestrel::ValueList& list) {
  const std::u16string text = list.ToText();
  const std::size_t lengthInBytes = (text.size() + 1) * kUnit;
  const std::uint8_t tag = Kestrel::vtWString;
  const auto length = static_cast<std::uint32_t>(lengthInBytes);

  auto reply = Kestrel::GetBuffer(Kestrel::BufferPool::ListFor(lengthInBytes));
  reply->Append(&tag, sizeof tag);
  reply->Append(&length, sizeof length);
  reply->Append(text.c_str(), lengthInBytes);
  return reply;
}

}  // namespace Tarn::CameraFinding
