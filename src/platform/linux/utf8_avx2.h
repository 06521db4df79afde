/// Long runs of ASCII with 256-bit vectors. The functions require HasAvx2(); utf8.cpp has the portable code.
#pragma once

#include <cstddef>

#include "platform/compiler.h"

namespace platform {

/// How many units the functions take at once.
inline constexpr std::size_t kAvx2Run = 64;

/// Copy whole runs up to the first that holds something else than ASCII. Require room for all units at target. The
/// result is the number of units copied.
TARN_AVX2 std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t units, char16_t* target);
TARN_AVX2 std::size_t CopyAsciiAvx2(const char16_t* from, std::size_t units, char* target);

}  // namespace platform
