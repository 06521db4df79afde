/// Base64 with 256-bit vectors, for processors that have them.
///
/// Each function does what whole vectors can do at its place; the portable code of base64.cpp does the rest, and
/// everything where the text is not as expected. None reads or writes outside the ranges that it is given.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kestrel {

template <class Char>
struct Base64VectorCodec {
  /// How far decoding came.
  struct Progress {
    std::size_t characters;
    std::size_t bytes;
  };

  /// Encodes whole lines of 57 bytes, each to 76 characters and a line end.
  void (*encodeLines)(const std::uint8_t* bytes, std::size_t lines, Char* text);
  /// Encodes part of a line without a line end; returns how many bytes, a multiple of 3.
  std::size_t (*encodePart)(const std::uint8_t* bytes, std::size_t byteCount, Char* text);
  /// Decodes lines of 76 characters that end in CR LF, and after the last of them groups without line ends, up to a
  /// vector that holds something else. bytes has the room that Base64DecodedBound says for the characters.
  Progress (*decode)(const Char* text, std::size_t characters, std::uint8_t* bytes);

  /// Null where the processor cannot run the others.
  static const Base64VectorCodec* Find();
};

}  // namespace Kestrel
