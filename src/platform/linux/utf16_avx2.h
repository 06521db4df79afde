/// UTF-16 to UTF-8 with 256-bit vectors. utf8.cpp has the portable code.
#pragma once

#include <cstddef>

#include "platform/compiler.h"

namespace platform {

/// The shortest text that the function takes.
inline constexpr std::ptrdiff_t kNarrowAvx2Units = 8;

/// The places that a conversion has reached.
struct Narrowed {
  const char16_t* from;
  char* target;
};

/// Stops before an unpaired surrogate and where the rest of the room is too small for a vector. Requires HasAvx2(), at
/// least kNarrowAvx2Units units, and room for the result; what is left of the room may be overwritten.
TARN_AVX2 Narrowed NarrowAvx2(const char16_t* from, const char16_t* end, char* target, char* roomEnd);

}  // namespace platform
