/// Decodes a long base64 text a few lines at a time, so that its reader takes no memory in proportion to the text.
///
/// Only for text as the encoder writes it: whole lines of 76 characters, each with CR LF behind it. A window of any
/// other text is refused unless it is the last, because a group of four characters may cross its end. Such a text must
/// be decoded as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/base64.h"

namespace Tarn::CameraFinding {

class Base64Window {
 public:
  /// text: UTF-16 code units in wire order, at any address; it must outlive the window.
  explicit Base64Window(std::span<const std::uint8_t> text) : text_(text) {}

  /// The bytes that are decoded and not consumed; valid until DecodeMore.
  std::span<const std::uint8_t> GetBytes() const { return {bytes_ + begin_, end_ - begin_}; }
  /// Drops bytes from the front. Requires size <= GetBytes().size().
  void Consume(std::size_t size) { begin_ += size; }
  /// Decodes the next lines behind the bytes that are there. False at the end of the text, where the text is not as the
  /// encoder writes it, and where kMostUnread is exceeded; the bytes are unspecified then.
  bool DecodeMore();

  /// More unread bytes than this are refused: an element of that size must be decoded with the whole text.
  static constexpr std::size_t kMostUnread = 8192;

 private:
  static constexpr std::size_t kLineUnits = Kestrel::kBase64LineCharacters + 2;
  /// Chosen so that code units and bytes of a window fit into an L1 data cache of 32 KiB.
  static constexpr std::size_t kWindowLines = 128;
  static constexpr std::size_t kWindowUnits = kWindowLines * kLineUnits;

  static bool IsWholeLines(std::u16string_view window, std::size_t decodedSize);

  std::span<const std::uint8_t> text_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  char16_t units_[kWindowUnits];
  std::uint8_t bytes_[kMostUnread + Kestrel::Base64DecodedBound(kWindowUnits)];
};

}  // namespace Tarn::CameraFinding
