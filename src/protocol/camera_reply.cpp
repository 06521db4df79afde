#include "protocol/camera_reply.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "base/base64.h"
#include "base/byte_order.h"
#include "protocol/base64_window.h"
#include "protocol/canonical_record.h"
#include "protocol/finder_messages.h"
#include "protocol/request_wire.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);

/// The code units of a reply that is one whole vtWString, without the terminator; nothing for any other reply.
std::optional<std::span<const std::uint8_t>> TextOf(std::span<const std::uint8_t> reply) {
  constexpr std::size_t kHeadSize = sizeof(std::uint8_t) + sizeof(std::uint32_t);
  if (reply.size() < kHeadSize || reply[0] != Kestrel::vtWString) return std::nullopt;
  const auto length = Kestrel::LoadLittleEndian<std::uint32_t>(&reply[1]);
  if (length < kUnit || length > reply.size() - kHeadSize) return std::nullopt;
  return reply.subspan(kHeadSize, (length / kUnit - 1) * kUnit);
}

/// Reads the next record, decoding as much of the text as it takes. False where it is not canonical.
bool ReadRecordFrom(Base64Window& window, CameraRecord& record, std::size_t& size) {
  while ((size = DecodeElement(window.GetBytes(), record)) == 0) {
    record = CameraRecord();
    if (!window.DecodeMore()) return false;
  }
  window.Consume(size);
  return true;
}

/// Reads a reply that is canonical from end to end. False for any other; the records are unspecified then.
bool ReadCanonicalReply(std::span<const std::uint8_t> reply, std::vector<CameraRecord>& records) {
  const auto text = TextOf(reply);
  if (!text) return false;
  const auto window = std::make_unique<Base64Window>(*text);
  if (!window->DecodeMore()) return false;
  const auto head = DecodeCameraListHead(window->GetBytes());
  if (!head) return false;
  window->Consume(head->sizeInBytes);
  const std::size_t provenSize = std::min(head->recordsSizeInBytes, Kestrel::Base64DecodedBound(text->size() / kUnit));
  records.reserve(std::min<std::size_t>(head->recordCount, provenSize / kSmallestElement<CameraRecord>));
  std::size_t recordsSize = 0;
  for (std::uint32_t i = 0; i < head->recordCount; ++i) {
    std::size_t size = 0;
    if (!ReadRecordFrom(*window, records.emplace_back(), size)) return false;
    recordsSize += size;
  }
  return recordsSize == head->recordsSizeInBytes;
}

}  // namespace

std::vector<CameraRecord> ReadCameraReply(std::span<const std::uint8_t> reply) {
  CameraListMessage message;
  if (ReadCanonicalReply(reply, message.cameras)) return std::move(message.cameras);
  message = {};
  Kestrel::ValueList list;
  DecodeReply(reply, list);
  Serialize(list, Direction::kRead, message);
  return std::move(message.cameras);
}

}  // namespace Tarn::CameraFinding
