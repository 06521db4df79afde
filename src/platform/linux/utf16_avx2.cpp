#include "platform/linux/utf16_avx2.h"

#ifdef TARN_X64

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace platform {
namespace {

/// Eight units are encoded at once and stored as two vectors: the second one begins after at most twelve bytes.
constexpr std::size_t kBlockUnits = 8;
constexpr std::size_t kBlockBytes = 24;
constexpr std::size_t kBlockRoom = 12 + 16;

/// A block in UTF-8, four bytes for each unit: a sequence of three bytes, of which the last two are the sequence of
/// two, and ASCII.
struct Block {
  __m256i bytes;
  unsigned lengths;  ///< two bits for each unit: one is set where it is not ASCII, both where it takes three bytes
};

/// For the lengths of four units, which of their bytes are the text.
struct alignas(16) Selection {
  std::uint8_t bytes[16];
};
constexpr auto kSelections = [] {
  std::array<Selection, 256> rows{};
  for (unsigned lengths = 0; lengths < rows.size(); ++lengths) {
    std::uint8_t* next = rows[lengths].bytes;
    for (int unit = 0; unit < 4; ++unit) {
      const int length = 1 + std::popcount(lengths >> 2 * unit & 3);
      const int first = 4 * unit + (length == 1 ? 3 : 3 - length);
      for (int i = first; i < first + length; ++i) *next++ = static_cast<std::uint8_t>(i);
    }
  }
  return rows;
}();

/// What is left of the text and of the room.
struct Rest {
  const char16_t* from;
  const char16_t* end;
  char* target;
  char* roomEnd;

  std::size_t Units() const { return static_cast<std::size_t>(end - from); }
  std::size_t Room() const { return static_cast<std::size_t>(roomEnd - target); }
  void Advance(std::size_t units, std::size_t bytes) {
    from += units;
    target += bytes;
  }
};

TARN_AVX2 inline __m128i LoadBlock(const char16_t* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
TARN_AVX2 inline __m256i LoadTwoBlocks(const char16_t* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
TARN_AVX2 inline void Store(__m128i bytes, char* target) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(target), bytes);
}

/// The last units of the text, less than a block, and NULs behind them. A shuffle moves them to the front.
TARN_AVX2 inline __m128i LoadLast(const char16_t* end, std::size_t units) {
  static constexpr std::uint8_t kMoves[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                              11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                              0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
  const __m128i move = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kMoves + 2 * (kBlockUnits - units)));
  return _mm_shuffle_epi8(LoadBlock(end - kBlockUnits), move);
}

TARN_AVX2 inline bool IsAscii(__m256i units) {
  return _mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF80))) != 0;
}

/// Two bits for each unit, set where it is a surrogate.
TARN_AVX2 inline std::uint32_t Surrogates(__m256i units) {
  const __m256i high = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800)));
  return static_cast<std::uint32_t>(
      _mm256_movemask_epi8(_mm256_cmpeq_epi16(high, _mm256_set1_epi16(static_cast<short>(0xD800)))));
}

TARN_AVX2 inline Block Encode(__m128i units) {
  const __m256i wide = _mm256_cvtepu16_epi32(units);
  const __m256i first = _mm256_srli_epi32(wide, 12);
  const __m256i second = _mm256_and_si256(_mm256_slli_epi32(wide, 2), _mm256_set1_epi32(0x3F00));
  const __m256i third = _mm256_and_si256(_mm256_slli_epi32(wide, 16), _mm256_set1_epi32(0x3F0000));
  const __m256i ascii = _mm256_slli_epi32(wide, 24);
  const __m256i notAscii = _mm256_cmpgt_epi32(wide, _mm256_set1_epi32(0x7F));
  const __m256i three = _mm256_cmpgt_epi32(wide, _mm256_set1_epi32(0x7FF));
  // The second byte leads a sequence of two: 0xC0 instead of 0x80.
  const __m256i marks =
      _mm256_or_si256(_mm256_set1_epi32(0x8080E0), _mm256_andnot_si256(three, _mm256_set1_epi32(0x4000)));
  const __m256i masks = _mm256_blend_epi16(notAscii, three, 0b10101010);
  const __m128i lengths = _mm_packs_epi16(_mm256_castsi256_si128(masks), _mm256_extracti128_si256(masks, 1));
  return {_mm256_or_si256(_mm256_or_si256(first, second), _mm256_or_si256(_mm256_or_si256(third, ascii), marks)),
          static_cast<unsigned>(_mm_movemask_epi8(lengths))};
}

/// The bytes of the first units of a block.
TARN_AVX2 inline std::size_t BytesOf(const Block& block, std::size_t units) {
  return units + static_cast<std::size_t>(std::popcount(block.lengths & ((1U << 2 * units) - 1)));
}

TARN_AVX2 inline __m128i Select(__m128i bytes, unsigned lengths) {
  return _mm_shuffle_epi8(bytes, _mm_load_si128(reinterpret_cast<const __m128i*>(kSelections[lengths].bytes)));
}
TARN_AVX2 inline void Store(const Block& block, char* target) {
  Store(Select(_mm256_castsi256_si128(block.bytes), block.lengths & 0xFF), target);
  Store(Select(_mm256_extracti128_si256(block.bytes, 1), block.lengths >> 8), target + BytesOf(block, 4));
}

TARN_AVX2 inline void NarrowAscii(Rest& rest) {
  constexpr std::size_t kRun = 4 * kBlockUnits;
  for (std::size_t runs = std::min(rest.Units(), rest.Room()) / kRun; runs > 0; --runs) {
    const __m256i first = LoadTwoBlocks(rest.from), second = LoadTwoBlocks(rest.from + kRun / 2);
    if (!IsAscii(_mm256_or_si256(first, second))) return;
    // The packing instruction works on each half of the vectors, so the quarters are put in order.
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0b11'01'10'00);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(rest.target), packed);
    rest.Advance(kRun, kRun);
  }
}

/// Two blocks at a time, up to one with a surrogate.
TARN_AVX2 inline void NarrowWithoutSurrogates(Rest& rest) {
  while (rest.Units() >= 2 * kBlockUnits && rest.Room() >= kBlockBytes + kBlockRoom) {
    const __m256i units = LoadTwoBlocks(rest.from);
    const __m128i first = _mm256_castsi256_si128(units), second = _mm256_extracti128_si256(units, 1);
    if (IsAscii(units)) {
      Store(_mm_packus_epi16(first, second), rest.target);
      rest.Advance(2 * kBlockUnits, 2 * kBlockUnits);
      NarrowAscii(rest);
      continue;
    }
    if (Surrogates(units) != 0) return;
    for (const __m128i half : {first, second}) {
      const Block block = Encode(half);
      Store(block, rest.target);
      rest.Advance(kBlockUnits, BytesOf(block, kBlockUnits));
    }
  }
}

/// One block, or what is left of it before the first surrogate or the end.
TARN_AVX2 inline void NarrowBlock(Rest& rest) {
  const __m128i units = rest.Units() < kBlockUnits ? LoadLast(rest.end, rest.Units()) : LoadBlock(rest.from);
  const __m256i zeroExtended = _mm256_zextsi128_si256(units);
  std::size_t count = std::min(rest.Units(), kBlockUnits);
  if (IsAscii(zeroExtended)) {
    Store(_mm_packus_epi16(units, units), rest.target);
    rest.Advance(count, count);
    return;
  }
  count = std::min(count, static_cast<std::size_t>(std::countr_zero(Surrogates(zeroExtended))) / 2);
  const Block block = Encode(units);
  Store(block, rest.target);
  rest.Advance(count, BytesOf(block, count));
}

bool BeginsWithPair(const Rest& rest) {
  return rest.Units() >= 2 && (rest.from[0] & 0xFC00) == 0xD800 && (rest.from[1] & 0xFC00) == 0xDC00;
}
void NarrowPair(Rest& rest) {
  const std::uint32_t character = 0x10000 + ((rest.from[0] & 0x3FFU) << 10) + (rest.from[1] & 0x3FFU);
  rest.target[0] = static_cast<char>(0xF0 | character >> 18);
  rest.target[1] = static_cast<char>(0x80 | (character >> 12 & 0x3F));
  rest.target[2] = static_cast<char>(0x80 | (character >> 6 & 0x3F));
  rest.target[3] = static_cast<char>(0x80 | (character & 0x3F));
  rest.Advance(2, 4);
}

}  // namespace

TARN_AVX2 Narrowed NarrowAvx2(const char16_t* from, const char16_t* end, char* target, char* roomEnd) {
  Rest rest = {from, end, target, roomEnd};
  const char16_t* before = nullptr;
  while (rest.from != before) {
    NarrowWithoutSurrogates(rest);
    before = rest.from;
    if (before == end || rest.Room() < kBlockRoom) break;
    NarrowBlock(rest);
    while (BeginsWithPair(rest)) NarrowPair(rest);
  }
  return {rest.from, rest.target};
}

}  // namespace platform

#else

namespace platform {

Narrowed NarrowAvx2(const char16_t* from, const char16_t*, char* target, char*) {
  return {from, target};
}

}  // namespace platform

#endif
