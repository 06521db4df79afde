#include "protocol/base64_window.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"

namespace Tarn::CameraFinding {

bool Base64Window::DecodeMore() {
  const std::size_t unread = end_ - begin_;
  if (text_.empty() || unread > kMostUnread) return false;
  std::memmove(bytes_, bytes_ + begin_, unread);
  const std::size_t units = std::min(kWindowUnits, text_.size() / sizeof(char16_t));
  Kestrel::LoadLittleEndian(text_.data(), std::span(units_, units));
  text_ = text_.subspan(units * sizeof(char16_t));
  const std::u16string_view window(units_, units);
  const Kestrel::Base64Decoded decoded = Kestrel::Base64DecodeTo(window, bytes_ + unread);
  begin_ = 0;
  end_ = unread + decoded.byteCount;
  return decoded.success && (text_.empty() || IsWholeLines(window, decoded.byteCount));
}

/// True where every line ends where it should and gives all its bytes: then no group of characters crosses the window's
/// end, and no "=" stands in it.
bool Base64Window::IsWholeLines(std::u16string_view window, std::size_t decodedSize) {
  for (std::size_t at = Kestrel::kBase64LineCharacters; at < window.size(); at += kLineUnits)
    if (window.substr(at, 2) != u"\r\n") return false;
  return decodedSize == kWindowLines * Kestrel::kBase64LineBytes;
}

}  // namespace Tarn::CameraFinding
