#include "base/base64_avx512.h"

#ifdef TARN_X64

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <utility>

#include "base/base64.h"

namespace Kestrel {
namespace {

constexpr std::size_t kVectorCharacters = 64;
constexpr std::size_t kVectorBytes = 48;

/// A line is one vector and this rest.
constexpr std::size_t kRestCharacters = kBase64LineCharacters - kVectorCharacters;
constexpr std::size_t kRestBytes = kBase64LineBytes - kVectorBytes;
constexpr std::size_t kLineEnd = 2;

/// The lanes 0 to count - 1. Requires count <= 64.
constexpr __mmask64 First(std::size_t count) {
  return count == 0 ? 0 : ~__mmask64{0} >> (64 - count);
}
constexpr __mmask32 Low(__mmask64 lanes) {
  return static_cast<__mmask32>(lanes);
}
constexpr __mmask32 High(__mmask64 lanes) {
  return static_cast<__mmask32>(lanes >> 32);
}

TARN_AVX512 inline __m512i Load512(const void* memory) {
  return _mm512_loadu_si512(memory);
}
TARN_AVX512 inline void Store512(void* memory, __m512i vector) {
  _mm512_storeu_si512(memory, vector);
}
TARN_AVX512 inline __m512i Widened(__m512i characters, int half) {
  const __m256i low = _mm512_castsi512_si256(characters);
  return _mm512_cvtepu8_epi16(half == 0 ? low : _mm512_extracti64x4_epi64(characters, 1));
}
/// With saturation: a unit above 255 becomes 255, which is no base64.
TARN_AVX512 inline __m512i Narrowed(__m512i low, __m512i high) {
  return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtusepi16_epi8(low)), _mm512_cvtusepi16_epi8(high), 1);
}

// Narrow text is stored as it is, wide text with zero bytes in between. A masked store takes several times as long as a
// plain one, so it is left for the ends.

TARN_AVX512 inline void StoreVector(char* text, __m512i characters) {
  Store512(text, characters);
}
TARN_AVX512 inline void StoreVector(char16_t* text, __m512i characters) {
  Store512(text, Widened(characters, 0));
  Store512(text + 32, Widened(characters, 1));
}
/// The first 16 characters.
TARN_AVX512 inline void StoreLane(char* text, __m512i characters) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(text), _mm512_castsi512_si128(characters));
}
TARN_AVX512 inline void StoreLane(char16_t* text, __m512i characters) {
  const __m256i units = _mm512_castsi512_si256(Widened(characters, 0));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), units);
}
TARN_AVX512 inline void Store(char* text, __mmask64 lanes, __m512i characters) {
  _mm512_mask_storeu_epi8(text, lanes, characters);
}
TARN_AVX512 inline void Store(char16_t* text, __mmask64 lanes, __m512i characters) {
  _mm512_mask_storeu_epi16(text, Low(lanes), Widened(characters, 0));
  if (High(lanes) != 0) _mm512_mask_storeu_epi16(text + 32, High(lanes), Widened(characters, 1));
}

TARN_AVX512 inline __m512i LoadVector(const char* text) {
  return Load512(text);
}
TARN_AVX512 inline __m512i LoadVector(const char16_t* text) {
  return Narrowed(Load512(text), Load512(text + 32));
}
/// All other lanes are "A".
TARN_AVX512 inline __m512i Load(const char* text, __mmask64 lanes) {
  return _mm512_mask_loadu_epi8(_mm512_set1_epi8('A'), lanes, text);
}
TARN_AVX512 inline __m512i Load(const char16_t* text, __mmask64 lanes) {
  const __m512i fill = _mm512_set1_epi16('A');
  const __m512i low = _mm512_mask_loadu_epi16(fill, Low(lanes), text);
  return Narrowed(low, High(lanes) == 0 ? fill : _mm512_mask_loadu_epi16(fill, High(lanes), text + 32));
}

/// The characters of 48 bytes.
TARN_AVX512 inline __m512i Encoded(__m512i bytes) {
  // Each group's three bytes a, b, c as the four bytes b, a, c, b: two words that hold two values each.
  const __m512i spread = _mm512_permutexvar_epi8(
      _mm512_set_epi8(46, 47, 45, 46, 43, 44, 42, 43, 40, 41, 39, 40, 37, 38, 36, 37, 34, 35, 33, 34, 31, 32, 30, 31,
                      28, 29, 27, 28, 25, 26, 24, 25, 22, 23, 21, 22, 19, 20, 18, 19, 16, 17, 15, 16, 13, 14, 12, 13,
                      10, 11, 9, 10, 7, 8, 6, 7, 4, 5, 3, 4, 1, 2, 0, 1),
      bytes);
  // Where the four values of each of the two groups in 64 bits begin. The look-up takes the low 6 bits of a lane.
  const __m512i values = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x3036'242A'1016'040A), spread);
  alignas(64) static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  return _mm512_permutexvar_epi8(values, _mm512_load_si512(kAlphabet));
}

TARN_AVX512 inline __m512i EncodedFrom(const std::uint8_t* bytes, std::size_t count) {
  return Encoded(_mm512_maskz_loadu_epi8(First(count), bytes));
}

/// From character to value; 0x80 for one outside the alphabet.
struct Values {
  alignas(64) std::uint8_t of[128];
};
constexpr Values kValues = [] {
  Values values{};
  std::ranges::fill(values.of, std::uint8_t{0x80});
  std::uint8_t value = 0;
  for (const auto& [first, last] : {std::pair{'A', 'Z'}, {'a', 'z'}, {'0', '9'}, {'+', '+'}, {'/', '/'}})
    for (char c = first; c <= last; ++c) values.of[static_cast<std::size_t>(c)] = value++;
  return values;
}();

struct Decoded {
  __m512i bytes;     ///< 48, at the beginning
  __mmask64 errors;  ///< the lanes whose character is not of the alphabet
};

TARN_AVX512 inline Decoded DecodedFrom(__m512i characters) {
  const __m512i values =
      _mm512_permutex2var_epi8(_mm512_load_si512(kValues.of), characters, _mm512_load_si512(kValues.of + 64));
  // Joins 6-bit values to 12 bits in a word, those to 24 bits in a double word, and puts the bytes into order.
  const __m512i words = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(words, _mm512_set1_epi32(0x00011000));
  const __m512i order = _mm512_set_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 60, 61, 62, 56, 57, 58, 52, 53,
                                        54, 48, 49, 50, 44, 45, 46, 40, 41, 42, 36, 37, 38, 32, 33, 34, 28, 29, 30, 24,
                                        25, 26, 20, 21, 22, 16, 17, 18, 12, 13, 14, 8, 9, 10, 4, 5, 6, 0, 1, 2);
  // A character above 127 is looked up by its low bits, so its own highest bit counts too.
  return {_mm512_permutexvar_epi8(order, groups), _mm512_movepi8_mask(_mm512_or_si512(values, characters))};
}

/// Stores the line's bytes, and 7 more of no meaning behind them, only where all of its characters are valid.
template <class Char>
TARN_AVX512 inline bool DecodeLine(const Char* text, std::uint8_t* bytes) {
  const Decoded first = DecodedFrom(LoadVector(text));
  const Decoded rest = DecodedFrom(Load(text + kVectorCharacters, First(kRestCharacters)));
  if ((first.errors | rest.errors) != 0) return false;
  Store512(bytes, first.bytes);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + kVectorBytes), _mm512_castsi512_si128(rest.bytes));
  return true;
}

}  // namespace

template <class Char>
TARN_AVX512 Char* EncodeAvx512(const std::uint8_t* bytes, std::size_t byteCount, Char* text) {
  const __mmask64 lineEnd = First(kRestCharacters + kLineEnd) & ~First(kRestCharacters);
  const __m512i lineEnds = _mm512_set1_epi16('\r' | '\n' << 8);
  // At least one more group must follow the line, because its last store writes two characters too many.
  for (; byteCount > kBase64LineBytes; byteCount -= kBase64LineBytes, bytes += kBase64LineBytes) {
    StoreVector(text, EncodedFrom(bytes, kVectorBytes));
    const __m512i rest = EncodedFrom(bytes + kVectorBytes, kRestBytes);
    StoreLane(text + kVectorCharacters, _mm512_mask_mov_epi8(rest, lineEnd, lineEnds));
    text += kBase64LineCharacters + kLineEnd;
  }
  const bool fillsLine = byteCount > kBase64LineBytes - 3;  // with its padding
  while (byteCount > 0) {
    const std::size_t count = std::min(byteCount, kVectorBytes), characters = (count + 2) / 3 * 4;
    const std::size_t padding = (3 - count % 3) % 3;
    const __mmask64 padded = First(characters) & ~First(characters - padding);
    Store(text, First(characters), _mm512_mask_mov_epi8(EncodedFrom(bytes, count), padded, _mm512_set1_epi8('=')));
    bytes += count;
    byteCount -= count;
    text += characters;
  }
  if (!fillsLine) return text;
  *text++ = '\r';
  *text++ = '\n';
  return text;
}

template <class Char>
TARN_AVX512 Base64Progress DecodeGroupsAvx512(const Char* const text, std::size_t characters,
                                              std::uint8_t* const bytes) {
  const Char* position = text;
  const Char* const end = text + characters;
  std::uint8_t* out = bytes;
  const auto left = [&] { return static_cast<std::size_t>(end - position); };
  // Two more groups must follow the line, because DecodeLine writes 7 bytes too many.
  while (left() >= kBase64LineCharacters + kLineEnd + 8 && position[kBase64LineCharacters] == '\r' &&
         position[kBase64LineCharacters + 1] == '\n' && DecodeLine(position, out)) {
    position += kBase64LineCharacters + kLineEnd;
    out += kBase64LineBytes;
  }
  while (left() >= 4) {
    const std::size_t count = std::min(left(), kVectorCharacters) & ~std::size_t{3};
    const Decoded decoded = DecodedFrom(Load(position, First(count)));
    const auto good = static_cast<std::size_t>(std::countr_zero(decoded.errors)) & ~std::size_t{3};
    const std::size_t valid = std::min(count, good);
    _mm512_mask_storeu_epi8(out, First(valid / 4 * 3), decoded.bytes);
    position += valid;
    out += valid / 4 * 3;
    if (valid < count) break;
  }
  return {static_cast<std::size_t>(position - text), static_cast<std::size_t>(out - bytes)};
}

#else

namespace Kestrel {

// Linked, but never called: no other processor has these vectors.
template <class Char>
Char* EncodeAvx512(const std::uint8_t*, std::size_t, Char*) {
  return nullptr;
}
template <class Char>
Base64Progress DecodeGroupsAvx512(const Char*, std::size_t, std::uint8_t*) {
  return {};
}

#endif

template char* EncodeAvx512(const std::uint8_t*, std::size_t, char*);
template char16_t* EncodeAvx512(const std::uint8_t*, std::size_t, char16_t*);
template Base64Progress DecodeGroupsAvx512(const char*, std::size_t, std::uint8_t*);
template Base64Progress DecodeGroupsAvx512(const char16_t*, std::size_t, std::uint8_t*);

}  // namespace Kestrel
