/// UTF-8 to UTF-16 with 256-bit vectors. The functions require HasAvx2(); utf8.cpp has the portable code.
#pragma once

#include <cstddef>

#include "platform/compiler.h"

namespace platform {

/// How many bytes CopyAsciiAvx2 takes at once.
inline constexpr std::size_t kAvx2Run = 64;

/// Copies whole runs up to the first that holds something else than ASCII. Requires room for all bytes at target. The
/// result is the number of bytes copied.
TARN_AVX2 std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t bytes, char16_t* target);

/// The shortest text that WidenAvx2 takes.
inline constexpr std::ptrdiff_t kWidenAvx2Bytes = 16;

/// The places that a conversion has reached.
struct Widened {
  const unsigned char* from;
  char16_t* target;
};

/// Stops before an invalid sequence and where the rest of the room is too small for a vector. Requires at least
/// kWidenAvx2Bytes bytes, and room for the result; what is left of the room may be overwritten.
TARN_AVX2 Widened WidenAvx2(const unsigned char* from, const unsigned char* end, char16_t* target, char16_t* roomEnd);

}  // namespace platform
