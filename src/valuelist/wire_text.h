/// A text within the bytes of a message, and its copies. Most texts are short: a name, an address, a version. Where
/// enough bytes may be read, a short one is copied in a piece of constant size, which takes two moves and no call.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel {

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

}  // namespace Kestrel
