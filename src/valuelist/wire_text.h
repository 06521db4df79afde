/// Copies of the texts of a message. Most texts are short: a name, an address, a version. So they are copied by a few
/// moves, because a call of memcpy takes longer than that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Kestrel {

/// A text within the bytes of a message. Where enough bytes may be read, a short one is copied in a piece of constant
/// size.
struct WireText {
  /// A std::string holds so many characters without an allocation.
  static constexpr std::size_t kPieceSize = 15;

  std::string_view characters;
  std::size_t readable;  ///< bytes that may be read from the first character on, not fewer than there are characters

  bool IsCopiedInPiece() const { return characters.size() <= kPieceSize && readable >= kPieceSize; }
  std::string MakeString() const { return IsCopiedInPiece() ? MakePiece() : std::string(characters); }
  void AssignTo(std::string& text) const;

 private:
  std::string MakePiece() const {
    std::string text(characters.data(), kPieceSize);
    text.resize(characters.size());
    return text;
  }
};

/// Copies the first bytes, then the last ones; they overlap where there are fewer than two times sizeof(Piece).
/// Requires at least sizeof(Piece) bytes.
template <class Piece>
void CopyEnds(char* target, const char* source, std::size_t n) {
  Piece piece;
  std::memcpy(&piece, source, sizeof piece);
  std::memcpy(target, &piece, sizeof piece);
  std::memcpy(&piece, source + n - sizeof piece, sizeof piece);
  std::memcpy(target + n - sizeof piece, &piece, sizeof piece);
}

/// Copies the text with its terminator; returns the end of the copy.
inline std::uint8_t* PutTerminated(const std::string& text, std::uint8_t* bytes) {
  const std::size_t n = text.size() + 1;
  const char* const source = text.c_str();
  char* const target = reinterpret_cast<char*>(bytes);
  if (n > 2 * sizeof(std::uint64_t)) {
    std::memcpy(target, source, n);
  } else if (n >= sizeof(std::uint64_t)) {
    CopyEnds<std::uint64_t>(target, source, n);
  } else if (n >= sizeof(std::uint32_t)) {
    CopyEnds<std::uint32_t>(target, source, n);
  } else {
    for (std::size_t i = 0; i < n; ++i) target[i] = source[i];
  }
  return bytes + n;
}

}  // namespace Kestrel
