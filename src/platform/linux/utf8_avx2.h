/// Long runs of ASCII with 256-bit vectors, for processors that have them.
#pragma once

#include <cstddef>

namespace platform {

/// Where it is false the functions must not be called.
bool HasAvx2();

/// What the functions look at together, in units.
inline constexpr std::size_t kAvx2Run = 64;

/// Copy such runs as long as they are ASCII. Return how many units that were.
std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t units, char16_t* target);
std::size_t CopyAsciiAvx2(const char16_t* from, std::size_t units, char* target);

}  // namespace platform
