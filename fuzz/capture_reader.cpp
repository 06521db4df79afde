#include "capture/capture_reader.h"

#include <algorithm>
#include <cstring>

#include "capture/redaction.h"
#include "fuzz_target.h"

namespace {

class FuzzSource final : public capture::ByteSource {
 public:
  explicit FuzzSource(fuzz::Bytes bytes) : bytes_(bytes) {}
  std::size_t Read(void* target, std::size_t size) override {
    const std::size_t some = std::min(size, bytes_.size());
    if (some > 0) std::memcpy(target, bytes_.data(), some);
    bytes_ = bytes_.subspan(some);
    return some;
  }

 private:
  fuzz::Bytes bytes_;
};

/// Redacts the body, where a second pass must find nothing more, and the texts of request and reply.
void CheckRedaction(const capture::Frame& frame) {
  std::vector<std::uint8_t> body = frame.body;
  capture::RedactBinary(body);
  std::vector<std::uint8_t> again = body;
  capture::RedactBinary(again);
  fuzz::Check(again == body, "credentials are taken out at once");
  for (const auto kind : {capture::PartKind::kRequest, capture::PartKind::kReply}) {
    const auto part = frame.Find(kind);
    if (!part) continue;
    std::vector<std::uint8_t> message(part->begin(), part->end());
    const bool isRequest = kind == capture::PartKind::kRequest;
    capture::RedactText(message, isRequest ? capture::kTextOfRequest : capture::TextOfReply(message));
  }
}

}  // namespace

/// A capture of any bytes: frames, or a refusal in one line.
FUZZ_TARGET(input) {
  FuzzSource source(input);
  capture::CaptureReader reader(source);
  std::uint64_t bytes = 0;
  try {
    for (capture::Frame frame; reader.Next(frame);) {
      bytes += frame.body.size();
      fuzz::Check(frame.body.size() <= frame.header.bodySize, "a body has no more than it says");
      static_cast<void>(frame.GetArguments());
      if (const auto error = frame.Find(capture::PartKind::kError)) static_cast<void>(capture::ReadErrorRecord(*error));
      CheckRedaction(frame);
    }
  } catch (const capture::CaptureError& error) {
    fuzz::Check(std::strchr(error.what(), '\n') == nullptr, "a refusal is one line");
  }
  fuzz::Check(bytes <= input.size(), "frames have no more bytes than the file");
}
