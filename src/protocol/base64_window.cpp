#include "protocol/base64_window.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);

/// Other units are for the system's code page to judge, and the decoder does not look at those behind a "=".
bool IsAscii(std::u16string_view window) {
  char16_t allBits = 0;
  for (const char16_t unit : window) allBits |= unit;
  return allBits < 0x80;
}

}  // namespace

bool Base64Window::DecodeMore() {
  const std::size_t unread = end_ - begin_;
  if (text_.empty() || unread > kMostUnread) return false;
  std::memmove(bytes_, bytes_ + begin_, unread);
  const std::size_t units = std::min(kWindowUnits, text_.size() / kUnit);
  Kestrel::LoadLittleEndian(text_.data(), std::span(units_, units));
  text_ = text_.subspan(units * kUnit);
  const std::u16string_view window(units_, units);
  const Kestrel::Base64Decoded decoded = Kestrel::Base64DecodeTo(window, bytes_ + unread);
  begin_ = 0;
  end_ = unread + decoded.byteCount;
  return decoded.success && (text_.empty() ? IsAscii(window) : IsWholeLines(window, decoded.byteCount));
}

/// True where every line ends where it should and gives all its bytes: then no group of characters crosses the window's
/// end, and no "=" stands in it.
bool Base64Window::IsWholeLines(std::u16string_view window, std::size_t decodedSize) {
  for (std::size_t at = Kestrel::kBase64LineCharacters; at < window.size(); at += kLineUnits)
    if (window.substr(at, 2) != u"\r\n") return false;
  return decodedSize == kWindowLines * Kestrel::kBase64LineBytes;
}

}  // namespace Tarn::CameraFinding
