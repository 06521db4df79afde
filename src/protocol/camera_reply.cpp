#include "protocol/camera_reply.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "base/base64.h"
#include "protocol/finder_messages.h"
#include "protocol/canonical_record.h"
#include "protocol/request_wire.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);
/// Characters, carriage return and line feed.
constexpr std::size_t kLineUnits = Kestrel::kBase64LineCharacters + 2;
/// Text and bytes of a window stay in the nearest cache.
constexpr std::size_t kWindowLines = 128;
constexpr std::size_t kWindowUnits = kWindowLines * kLineUnits;
/// A record that does not fit in here goes the long way.
constexpr std::size_t kRecordRoom = 8192;

/// The text of a reply, as bytes: it stands at an odd address. Nothing where the reply is no whole wide text.
std::optional<std::span<const std::uint8_t>> TextOf(std::span<const std::uint8_t> reply) {
  constexpr std::size_t kHeadSize = sizeof(std::uint8_t) + sizeof(std::uint32_t);
  std::uint32_t length = 0;
  if (reply.size() < kHeadSize || reply[0] != Kestrel::vtWString) return std::nullopt;
  std::memcpy(&length, &reply[1], sizeof length);
  if (length < kUnit || length > reply.size() - kHeadSize) return std::nullopt;
  return reply.subspan(kHeadSize, (length / kUnit - 1) * kUnit);
}

/// The bytes behind a base64 text in whole lines, decoded as they are needed.
class DecodedLines {
 public:
  explicit DecodedLines(std::span<const std::uint8_t> text) : text_(text) {}

  /// What is decoded and not consumed.
  std::span<const std::uint8_t> GetBytes() const { return {bytes_ + begin_, end_ - begin_}; }
  void Consume(std::size_t size) { begin_ += size; }

  /// Decodes some more lines behind what is there. False where there are none, where a whole record must have fitted,
  /// and where the text is not what the encoder writes: then only decoding it as a whole tells what it means.
  bool DecodeMore() {
    const std::size_t unread = end_ - begin_;
    if (text_.empty() || unread > kRecordRoom) return false;
    std::memmove(bytes_, bytes_ + begin_, unread);
    const std::size_t units = std::min(kWindowUnits, text_.size() / kUnit);
    std::memcpy(units_, text_.data(), units * kUnit);
    text_ = text_.subspan(units * kUnit);
    const std::u16string_view window(units_, units);
    const Kestrel::Base64Decoded decoded = Kestrel::Base64DecodeTo(window, bytes_ + unread);
    begin_ = 0;
    end_ = unread + decoded.byteCount;
    return decoded.success && (text_.empty() ? IsAscii(window) : IsWholeLines(window, decoded.byteCount));
  }

 private:
  /// Line ends where they belong and as many bytes as the rest can give: so no group crosses the window's end.
  static bool IsWholeLines(std::u16string_view window, std::size_t byteCount) {
    for (std::size_t at = Kestrel::kBase64LineCharacters; at < window.size(); at += kLineUnits)
      if (window.substr(at, 2) != u"\r\n") return false;
    return byteCount == kWindowLines * Kestrel::kBase64LineBytes;
  }
  /// Other units are for the system's code page to judge; behind a "=" the decoder does not see them.
  static bool IsAscii(std::u16string_view window) {
    char16_t allBits = 0;
    for (const char16_t unit : window) allBits |= unit;
    return allBits < 0x80;
  }

  std::span<const std::uint8_t> text_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  char16_t units_[kWindowUnits];
  std::uint8_t bytes_[kRecordRoom + Kestrel::Base64DecodedBound(kWindowUnits)];
};

/// Reads a reply that is in its usual form from end to end. False for any other: the records are anything then.
bool ReadUsualReply(std::span<const std::uint8_t> reply, std::vector<CameraRecord>& records) {
  const auto text = TextOf(reply);
  if (!text) return false;
  const auto lines = std::make_unique<DecodedLines>(*text);
  if (!lines->DecodeMore()) return false;
  const auto head = DecodeCameraListHead(lines->GetBytes());
  if (!head) return false;
  lines->Consume(head->size);
  const std::size_t provenSize = std::min(head->recordsSize, Kestrel::Base64DecodedBound(text->size() / kUnit));
  records.reserve(std::min<std::size_t>(head->recordCount, provenSize / kSmallestElement));
  std::size_t recordsSize = 0;
  for (std::uint32_t i = 0; i < head->recordCount; ++i) {
    std::size_t size = DecodeElement(lines->GetBytes(), records.emplace_back());
    while (size == 0) {
      if (!lines->DecodeMore()) return false;
      records.back() = CameraRecord();
      size = DecodeElement(lines->GetBytes(), records.back());
    }
    lines->Consume(size);
    recordsSize += size;
  }
  return recordsSize == head->recordsSize;
}

}  // namespace

std::vector<CameraRecord> ReadCameraReply(std::span<const std::uint8_t> reply) {
  CameraListMessage message;
  if (ReadUsualReply(reply, message.cameras)) return std::move(message.cameras);
  message = {};
  Kestrel::ValueList list;
  DecodeReply(reply, list);
  Serialize(list, Direction::kRead, message);
  return std::move(message.cameras);
}

}  // namespace Tarn::CameraFinding
