/// Long runs of ASCII in UTF-8 with 256-bit vectors. utf8.cpp has the portable code.
#pragma once

#include <cstddef>

#include "platform/compiler.h"

namespace platform {

/// How many bytes the function takes at once.
inline constexpr std::size_t kAvx2Run = 64;

/// Copies whole runs up to the first that holds something else than ASCII. Returns the number of bytes copied. Requires
/// HasAvx2() and room for all of them at target.
TARN_AVX2 std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t units, char16_t* target);

}  // namespace platform
