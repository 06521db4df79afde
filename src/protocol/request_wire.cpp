#include "protocol/request_wire.h"

#include <string>

#include "base/base64.h"
#include "base/byte_order.h"
#include "base/exceptions.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/stream.h"
#include "valuelist/variant.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);
constexpr std::size_t kCodeSize = sizeof kFinderRequestCode;
static_assert(kCodeSize % alignof(char16_t) == 0, "the text is written where it stands in the request");

}  // namespace

Kestrel::ReferencePointer<Kestrel::Buffer> EncodeRequest(const Kestrel::ValueList& command) {
  const auto binary = Kestrel::GetBuffer(Kestrel::MediumBufferList);
  command.Write(*binary);
  const std::size_t binarySize = binary->GetBytes().size();
  const std::size_t requestSize = kCodeSize + kUnit * Kestrel::Base64EncodedLength(binarySize);

  auto request = Kestrel::GetBuffer(Kestrel::BufferPool::ListFor(requestSize));
  std::uint8_t* const bytes = request->Reserve(requestSize);
  Kestrel::StoreLittleEndian(bytes, kFinderRequestCode);
  Kestrel::Base64EncodeTo(binary->GetData(), binarySize, reinterpret_cast<char16_t*>(bytes + kCodeSize));
  return request;
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
