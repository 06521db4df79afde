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
/// Thirty-two units to bytes. The packing instruction works on each half of the vectors, so the quarters are put in
/// order.
TARN_AVX2 inline void Narrow(__m256i first, __m256i second, char* target) {
  Store(target, _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8));
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

TARN_AVX2 std::size_t CopyAsciiAvx2(const char16_t* from, std::size_t units, char* target) {
  const __m256i notAscii = _mm256_set1_epi16(static_cast<short>(0xFF80));
  std::size_t done = 0;
  for (; units - done >= kAvx2Run; done += kAvx2Run) {
    const __m256i first = Load(from + done), second = Load(from + done + 16);
    const __m256i third = Load(from + done + 32), fourth = Load(from + done + 48);
    const __m256i bits = _mm256_or_si256(_mm256_or_si256(first, second), _mm256_or_si256(third, fourth));
    if (_mm256_testz_si256(bits, notAscii) == 0) break;
    Narrow(first, second, target + done);
    Narrow(third, fourth, target + done + 32);
  }
  return done;
}

}  // namespace platform

#else

namespace platform {

std::size_t CopyAsciiAvx2(const unsigned char*, std::size_t, char16_t*) {
  return 0;
}
std::size_t CopyAsciiAvx2(const char16_t*, std::size_t, char*) {
  return 0;
}

}  // namespace platform

#endif
