#include "platform/linux/utf8_avx2.h"

#ifdef TARN_X64

#include <immintrin.h>

namespace platform {
namespace {

TARN_AVX2 inline __m256i Load(const void* memory) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(memory));
}
TARN_AVX2 inline void Store(void* memory, __m256i vector) {
  _mm256_storeu_si256(static_cast<__m256i*>(memory), vector);
}
/// Sixteen bytes to sixteen units.
TARN_AVX2 inline void Widen(const unsigned char* from, char16_t* target) {
  Store(target, _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))));
}

}  // namespace

TARN_AVX2 std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t units, char16_t* target) {
  std::size_t done = 0;
  for (; units - done >= kAvx2Run; done += kAvx2Run) {
    if (_mm256_movemask_epi8(_mm256_or_si256(Load(from + done), Load(from + done + 32))) != 0) break;
    for (std::size_t i = 0; i < kAvx2Run; i += 16) Widen(from + done + i, target + done + i);
  }
  return done;
}

}  // namespace platform

#else

namespace platform {

std::size_t CopyAsciiAvx2(const unsigned char*, std::size_t, char16_t*) {
  return 0;
}

}  // namespace platform

#endif
