/// Base64 with 256-bit vectors, in narrow (Char is char) and UTF-16 (char16_t) text. All require platform::HasAvx2().
///
/// Each function does the whole vectors at the place that it is given, and base64.cpp, which also has the portable
/// code, does the rest. None reads or writes outside the ranges that it is given, and none throws.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/base64_progress.h"
#include "platform/compiler.h"

namespace Kestrel {

/// Encodes whole lines of 57 bytes, each to 76 characters and a line end.
template <class Char>
TARN_AVX2 void EncodeLinesAvx2(const std::uint8_t* bytes, std::size_t lines, Char* text);

/// Encodes part of a line, without a line end. Returns how many bytes, a multiple of 3.
template <class Char>
TARN_AVX2 std::size_t EncodePartOfLineAvx2(const std::uint8_t* bytes, std::size_t byteCount, Char* text);

/// Decodes lines of 76 characters that end in CR LF, and after the last of them groups without line ends, up to the
/// first vector that holds anything else. bytes has room for Base64DecodedBound(characters).
template <class Char>
TARN_AVX2 Base64Progress DecodeGroupsAvx2(const Char* text, std::size_t characters, std::uint8_t* bytes);

}  // namespace Kestrel
