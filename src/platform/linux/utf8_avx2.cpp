#include "platform/linux/utf8_avx2.h"

#ifdef TARN_X64

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace platform {
namespace {

/// Each of sixteen bytes is decoded as if it were the last one of a character, to one unit; then the units of those
/// that are the last one are kept. So a character may begin in one block and end in the next one, and all blocks are
/// whole, because the processor would have to wait for where the next one begins otherwise.
constexpr std::ptrdiff_t kBlock = 16;

struct Block {
  __m128i bytes;
  __m128i before1, before2;  ///< for each byte the one before it, and the one before that
};

/// For eight bits, the bytes of the units whose bits are set.
struct alignas(16) Selection {
  std::uint8_t bytes[16];
};
constexpr auto kSelections = [] {
  std::array<Selection, 256> rows{};
  for (unsigned bits = 0; bits < rows.size(); ++bits) {
    std::uint8_t* next = rows[bits].bytes;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if ((bits >> unit & 1) == 0) continue;
      *next++ = static_cast<std::uint8_t>(2 * unit);
      *next++ = static_cast<std::uint8_t>(2 * unit + 1);
    }
  }
  return rows;
}();

TARN_AVX2 inline __m128i Load(const unsigned char* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
TARN_AVX2 inline __m256i LoadTwo(const unsigned char* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

/// The last bytes of the text, less than a block, with NULs behind them. A shuffle moves them to the front.
TARN_AVX2 inline __m128i LoadLast(const unsigned char* end, std::ptrdiff_t bytes) {
  static constexpr std::uint8_t kMoves[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                              11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                              0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
  return _mm_shuffle_epi8(Load(end - kBlock), Load(kMoves + kBlock - bytes));
}

TARN_AVX2 inline void StoreAscii(__m128i bytes, char16_t* target) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(target), _mm256_cvtepu8_epi16(bytes));
}
TARN_AVX2 inline void StoreSelected(__m128i units, unsigned bits, char16_t* target) {
  const __m128i selection = _mm_load_si128(reinterpret_cast<const __m128i*>(kSelections[bits].bytes));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target), _mm_shuffle_epi8(units, selection));
}

TARN_AVX2 inline unsigned Bits(__m128i bytes) {
  return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}
TARN_AVX2 inline __m128i And(__m128i bytes, int byte) {
  return _mm_and_si128(bytes, _mm_set1_epi8(static_cast<char>(byte)));
}
TARN_AVX2 inline __m128i Or(__m128i first, __m128i second) {
  return _mm_or_si128(first, second);
}
TARN_AVX2 inline __m128i IsEqual(__m128i bytes, int byte) {
  return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(byte)));
}
TARN_AVX2 inline __m128i IsAtLeast(__m128i bytes, int byte) {
  return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(static_cast<char>(byte))), bytes);
}
TARN_AVX2 inline __m128i IsContinuation(const Block& block) {
  return _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0xC0)), block.bytes);  // as signed numbers
}

/// The continuation bytes that the leads before them demand.
TARN_AVX2 inline __m128i IsExpected(const Block& block) {
  return Or(IsAtLeast(block.before1, 0xC0), IsAtLeast(block.before2, 0xE0));
}

/// What is invalid behind the bytes before it, and the leads of four bytes.
TARN_AVX2 inline __m128i IsRefused(const Block& block) {
  const __m128i misplaced = _mm_xor_si128(IsContinuation(block), IsExpected(block));
  const __m128i lead = Or(IsEqual(And(block.bytes, 0xFE), 0xC0), IsAtLeast(block.bytes, 0xF0));
  const __m128i low = _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0xA0)), block.bytes);
  const __m128i overlong = _mm_and_si128(low, IsEqual(block.before1, 0xE0));
  const __m128i surrogate = _mm_andnot_si128(low, IsEqual(block.before1, 0xED));
  return Or(Or(misplaced, lead), Or(overlong, surrogate));
}

/// Neither a lead nor the second of three bytes.
TARN_AVX2 inline unsigned EndsOfCharacters(const Block& block) {
  return ~Bits(Or(IsAtLeast(block.bytes, 0xC0), IsAtLeast(block.before1, 0xE0)));
}

TARN_AVX2 inline __m256i Decode(const Block& block) {
  const __m128i isContinuation = IsContinuation(block);
  const __m256i low = _mm256_cvtepu8_epi16(_mm_andnot_si128(And(isContinuation, 0xC0), block.bytes));
  const __m256i middle = _mm256_cvtepu8_epi16(_mm_and_si128(isContinuation, And(block.before1, 0x3F)));
  const __m256i high = _mm256_cvtepu8_epi16(_mm_and_si128(IsAtLeast(block.before2, 0xE0), And(block.before2, 0x0F)));
  return _mm256_or_si256(low, _mm256_or_si256(_mm256_slli_epi16(middle, 6), _mm256_slli_epi16(high, 12)));
}

/// Stops before a sequence that is invalid or longer than three bytes.
TARN_AVX2 inline Widened WidenBlocks(const unsigned char* from, const unsigned char* end, char16_t* target,
                                     char16_t* roomEnd) {
  const unsigned char* const start = from;
  __m128i before = _mm_setzero_si128();
  while (from != end && roomEnd - target >= kBlock) {
    const std::ptrdiff_t count = std::min(end - from, kBlock);
    const __m128i bytes = count < kBlock ? LoadLast(end, count) : Load(from);
    const Block block = {bytes, _mm_alignr_epi8(bytes, before, 15), _mm_alignr_epi8(bytes, before, 14)};
    before = bytes;
    if (Bits(Or(bytes, IsExpected(block))) == 0) {
      StoreAscii(bytes, target);
      from += count;
      target += count;
      continue;
    }
    const unsigned stops = Bits(IsRefused(block)) | 1U << count;
    const unsigned ends = EndsOfCharacters(block) & ((stops & -stops) - 1);  // below the first stop
    const __m256i units = Decode(block);
    StoreSelected(_mm256_castsi256_si128(units), ends & 0xFF, target);
    StoreSelected(_mm256_extracti128_si256(units, 1), ends >> 8, target + std::popcount(ends & 0xFF));
    target += std::popcount(ends);
    if (stops != 1U << kBlock) {
      from += std::bit_width(ends);
      break;
    }
    from += kBlock;
  }
  // Back to the lead of a character whose last byte has not been reached.
  if (from - start >= 1 && from[-1] >= 0xC0) return {from - 1, target};
  if (from - start >= 2 && from[-2] >= 0xE0) return {from - 2, target};
  return {from, target};
}

/// Converts a sequence of four bytes. Returns false where there is none.
bool WidenPair(Widened& at, const unsigned char* end) {
  if (end - at.from < 4 || at.from[0] < 0xF0) return false;
  char32_t character = at.from[0] & 0x0F;
  for (int i = 1; i < 4; ++i) {
    if ((at.from[i] & 0xC0) != 0x80) return false;
    character = character << 6 | (at.from[i] & 0x3F);
  }
  if (character < 0x10000 || character > 0x10FFFF) return false;
  at.target[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
  at.target[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  at = {at.from + 4, at.target + 2};
  return true;
}

}  // namespace

TARN_AVX2 std::size_t CopyAsciiAvx2(const unsigned char* from, std::size_t bytes, char16_t* target) {
  std::size_t done = 0;
  for (; bytes - done >= kAvx2Run; done += kAvx2Run) {
    if (_mm256_movemask_epi8(_mm256_or_si256(LoadTwo(from + done), LoadTwo(from + done + 2 * kBlock))) != 0) break;
    for (std::size_t i = done; i < done + kAvx2Run; i += kBlock) StoreAscii(Load(from + i), target + i);
  }
  return done;
}

TARN_AVX2 Widened WidenAvx2(const unsigned char* from, const unsigned char* end, char16_t* target, char16_t* roomEnd) {
  Widened at = WidenBlocks(from, end, target, roomEnd);
  while (WidenPair(at, end)) {
    while (WidenPair(at, end)) continue;
    at = WidenBlocks(at.from, end, at.target, roomEnd);
  }
  return at;
}

}  // namespace platform

#else

namespace platform {

std::size_t CopyAsciiAvx2(const unsigned char*, std::size_t, char16_t*) {
  return 0;
}
Widened WidenAvx2(const unsigned char* from, const unsigned char*, char16_t* target, char16_t*) {
  return {from, target};
}

}  // namespace platform

#endif
