/// Base64 with 512-bit vectors, in narrow (Char is char) and UTF-16 (char16_t) text. All require
/// platform::HasAvx512Vbmi().
///
/// Vectors that are masked take any number of characters, so nothing is left for the portable code but what ends a
/// text. None of these functions reads or writes outside the ranges that it is given, and none throws.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/base64_progress.h"
#include "platform/compiler.h"

namespace Kestrel {

/// Encodes everything, padding and line ends included, and returns the end.
template <class Char>
TARN_AVX512 Char* EncodeAvx512(const std::uint8_t* bytes, std::size_t byteCount, Char* text);

/// Decodes whole groups, and the line ends between lines of 76 characters, up to the first other character.
template <class Char>
TARN_AVX512 Base64Progress DecodeGroupsAvx512(const Char* text, std::size_t characters, std::uint8_t* bytes);

}  // namespace Kestrel
