/// Tells the address sanitizer which bytes nobody may touch; does nothing in other builds.
///
/// A recycled buffer keeps its storage. So without these marks the sanitizer would miss a read beyond the length of a
/// buffer, or through a pointer into a buffer that has returned to the pool.
#pragma once

#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define TARN_POISONS_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARN_POISONS_MEMORY 1
#endif
#endif

#ifdef TARN_POISONS_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace Kestrel {

inline void PoisonBytes([[maybe_unused]] const std::uint8_t* bytes, [[maybe_unused]] std::uint64_t n) {
#ifdef TARN_POISONS_MEMORY
  ASAN_POISON_MEMORY_REGION(bytes, n);
#endif
}

inline void UnpoisonBytes([[maybe_unused]] const std::uint8_t* bytes, [[maybe_unused]] std::uint64_t n) {
#ifdef TARN_POISONS_MEMORY
  ASAN_UNPOISON_MEMORY_REGION(bytes, n);
#endif
}

}  // namespace Kestrel
