#include "base/base64_avx2.h"

#ifdef TARN_X64

#include <immintrin.h>

#include <cstring>

#include "base/base64.h"

namespace Kestrel {
namespace {

// A vector holds two lanes of 16 characters, or of 12 bytes.
constexpr std::size_t kVectorCharacters = 32;
constexpr std::size_t kVectorBytes = 24;
constexpr std::size_t kLaneCharacters = 16;
constexpr std::size_t kLaneBytes = 12;

// A line is two vectors and a lane; the lane overlaps the second vector by one group.
constexpr std::size_t kLastLaneCharacter = kBase64LineCharacters - kLaneCharacters;
constexpr std::size_t kLastLaneByte = kBase64LineBytes - kLaneBytes;

TARN_AVX2 inline __m128i Load128(const void* memory) {
  return _mm_loadu_si128(static_cast<const __m128i*>(memory));
}
TARN_AVX2 inline __m256i Load256(const void* memory) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(memory));
}
TARN_AVX2 inline void Store128(void* memory, __m128i vector) {
  _mm_storeu_si128(static_cast<__m128i*>(memory), vector);
}
TARN_AVX2 inline void Store256(void* memory, __m256i vector) {
  _mm256_storeu_si256(static_cast<__m256i*>(memory), vector);
}
TARN_AVX2 inline __m256i InBothLanes(__m128i lane) {
  return _mm256_broadcastsi128_si256(lane);
}

/// Narrow text is stored as it is, wide text with zero bytes in between.
TARN_AVX2 inline void StoreLane(char* text, __m128i characters) {
  Store128(text, characters);
}
TARN_AVX2 inline void StoreLane(char16_t* text, __m128i characters) {
  Store256(text, _mm256_cvtepu8_epi16(characters));
}
TARN_AVX2 inline void StoreVector(char* text, __m256i characters) {
  Store256(text, characters);
}
TARN_AVX2 inline void StoreVector(char16_t* text, __m256i characters) {
  StoreLane(text, _mm256_castsi256_si128(characters));
  StoreLane(text + kLaneCharacters, _mm256_extracti128_si256(characters, 1));
}

/// Wide characters are narrowed with saturation: one above 255 becomes 0 or 255, neither of which is base64.
TARN_AVX2 inline __m128i LoadLane(const char* text) {
  return Load128(text);
}
TARN_AVX2 inline __m128i LoadLane(const char16_t* text) {
  return _mm_packus_epi16(Load128(text), Load128(text + 8));
}
TARN_AVX2 inline __m256i LoadVector(const char* text) {
  return Load256(text);
}
TARN_AVX2 inline __m256i LoadVector(const char16_t* text) {
  const __m256i packed = _mm256_packus_epi16(Load256(text), Load256(text + kLaneCharacters));
  return _mm256_permute4x64_epi64(packed, 0b11'01'10'00);  // the instruction packs each lane for itself
}

/// The 16 characters of the 12 bytes at the beginning of each lane.
TARN_AVX2 inline __m256i Encoded(__m256i bytes) {
  // Each group's three bytes a, b, c as the four bytes b, a, c, b: two words that hold two values each.
  const __m256i spread =
      _mm256_shuffle_epi8(bytes, InBothLanes(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10)));
  // Products shift each 6-bit value to its place: the first and third to the right, the others to the left.
  const __m256i right =
      _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
  const __m256i left =
      _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
  const __m256i values = _mm256_or_si256(right, left);
  // The distance from value to character depends on the range: 0 for A-Z, 1 for a-z, 2 to 11 digits, 12 "+", 13 "/".
  // A comparison gives -1 where it holds.
  const __m256i isNotUpper = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));
  const __m256i range = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), isNotUpper);
  const __m256i distances =
      InBothLanes(_mm_setr_epi8('A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0));
  return _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, range));
}

/// Reads 28 bytes.
template <class Char>
TARN_AVX2 inline void EncodeVector(const std::uint8_t* bytes, Char* text) {
  const __m256i low = _mm256_castsi128_si256(Load128(bytes));
  StoreVector(text, Encoded(_mm256_inserti128_si256(low, Load128(bytes + kLaneBytes), 1)));
}

/// The first two vectors of a line.
template <class Char>
TARN_AVX2 inline void EncodeLineStart(const std::uint8_t* bytes, Char* text) {
  EncodeVector(bytes, text);
  EncodeVector(bytes + kVectorBytes, text + kVectorCharacters);
}

/// The last 12 bytes of a line, at the lane's beginning. The load ends where the line ends.
TARN_AVX2 inline __m128i LoadLastLane(const std::uint8_t* line) {
  return _mm_srli_si128(Load128(line + kBase64LineBytes - 16), 16 - kLaneBytes);
}

template <class Char>
TARN_AVX2 inline void EndLine(Char* text, __m128i lastLane) {
  StoreLane(text + kLastLaneCharacter, lastLane);
  text[kBase64LineCharacters] = '\r';
  text[kBase64LineCharacters + 1] = '\n';
}

struct Decoded {
  __m256i bytes;   ///< 12 in each lane, at its beginning
  __m256i errors;  ///< not zero where a character is not of the alphabet
};

TARN_AVX2 inline Decoded DecodedFrom(__m256i characters) {
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  const __m256i high = _mm256_and_si256(_mm256_srli_epi32(characters, 4), nibble);
  const __m256i low = _mm256_and_si256(characters, nibble);
  // High nibbles whose characters are valid with the same low nibbles form a set, and each set has a bit: 1 for 2x ("+"
  // and "/"), 2 for 3x (digits), 4 for 4x and 6x, 8 for 5x and 7x, 16 for all others. setOfHigh gives the bit of a high
  // nibble, wrongLow the bits with which a low nibble is not valid: a character is wrong where they meet.
  const __m256i wrongLow = InBothLanes(
      _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i setOfHigh = InBothLanes(
      _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  // From character to value, by high nibble; "/" takes the unused row before that of "+".
  const __m256i distances = InBothLanes(
      _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i isSlash = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/'));
  const __m256i values = _mm256_add_epi8(characters, _mm256_shuffle_epi8(distances, _mm256_add_epi8(high, isSlash)));
  // Joins 6-bit values to 12 bits in a word, those to 24 bits in a double word, and puts the bytes into order.
  const __m256i words = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(words, _mm256_set1_epi32(0x00011000));
  const __m256i order = InBothLanes(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  return {_mm256_shuffle_epi8(groups, order),
          _mm256_and_si256(_mm256_shuffle_epi8(wrongLow, low), _mm256_shuffle_epi8(setOfHigh, high))};
}

TARN_AVX2 inline bool IsZero(__m256i vector) {
  return _mm256_testz_si256(vector, vector) != 0;
}

/// Stores 24 bytes, and 8 more of no meaning behind them.
TARN_AVX2 inline void StoreBytes(std::uint8_t* bytes, __m256i decoded) {
  Store256(bytes, _mm256_permutevar8x32_epi32(decoded, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7)));
}

/// Stores 12 bytes.
TARN_AVX2 inline void StoreLaneBytes(std::uint8_t* bytes, __m256i decoded) {
  const __m128i lane = _mm256_castsi256_si128(decoded);
  const int last = _mm_extract_epi32(lane, 2);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), lane);
  std::memcpy(bytes + 8, &last, sizeof last);
}

/// Stores the line's bytes only where all of its characters are valid.
template <class Char>
TARN_AVX2 inline bool DecodeLine(const Char* text, std::uint8_t* bytes) {
  const Decoded first = DecodedFrom(LoadVector(text));
  const Decoded second = DecodedFrom(LoadVector(text + kVectorCharacters));
  const Decoded last = DecodedFrom(InBothLanes(LoadLane(text + kLastLaneCharacter)));
  if (!IsZero(_mm256_or_si256(_mm256_or_si256(first.errors, second.errors), last.errors))) return false;
  StoreBytes(bytes, first.bytes);
  StoreBytes(bytes + kVectorBytes, second.bytes);
  StoreLaneBytes(bytes + kLastLaneByte, last.bytes);
  return true;
}

}  // namespace

template <class Char>
TARN_AVX2 void EncodeLinesAvx2(const std::uint8_t* bytes, std::size_t lines, Char* text) {
  constexpr std::size_t kLine = kBase64LineCharacters + 2;
  // Two lines at a time, because their last lanes make one vector.
  for (; lines >= 2; lines -= 2, bytes += 2 * kBase64LineBytes, text += 2 * kLine) {
    EncodeLineStart(bytes, text);
    EncodeLineStart(bytes + kBase64LineBytes, text + kLine);
    const __m256i last = Encoded(_mm256_set_m128i(LoadLastLane(bytes + kBase64LineBytes), LoadLastLane(bytes)));
    EndLine(text, _mm256_castsi256_si128(last));
    EndLine(text + kLine, _mm256_extracti128_si256(last, 1));
  }
  if (lines == 0) return;
  EncodeLineStart(bytes, text);
  EndLine(text, _mm256_castsi256_si128(Encoded(InBothLanes(LoadLastLane(bytes)))));
}

template <class Char>
TARN_AVX2 std::size_t EncodePartOfLineAvx2(const std::uint8_t* bytes, std::size_t byteCount, Char* text) {
  std::size_t done = 0;
  for (; byteCount - done >= kLaneBytes + 16; done += kVectorBytes, text += kVectorCharacters) {
    EncodeVector(bytes + done, text);
  }
  for (; byteCount - done >= 16; done += kLaneBytes, text += kLaneCharacters) {
    StoreLane(text, _mm256_castsi256_si128(Encoded(InBothLanes(Load128(bytes + done)))));
  }
  return done;
}

template <class Char>
TARN_AVX2 Base64Progress DecodeGroupsAvx2(const Char* const text, std::size_t characters, std::uint8_t* const bytes) {
  const Char* position = text;
  const Char* const end = text + characters;
  std::uint8_t* out = bytes;
  const auto left = [&] { return static_cast<std::size_t>(end - position); };
  while (left() >= kBase64LineCharacters + 2 && position[kBase64LineCharacters] == '\r' &&
         position[kBase64LineCharacters + 1] == '\n' && DecodeLine(position, out)) {
    position += kBase64LineCharacters + 2;
    out += kBase64LineBytes;
  }
  // Two more groups must follow the vector, because StoreBytes writes 8 bytes too many.
  while (left() >= kVectorCharacters + 8) {
    const Decoded decoded = DecodedFrom(LoadVector(position));
    if (!IsZero(decoded.errors)) break;
    StoreBytes(out, decoded.bytes);
    position += kVectorCharacters;
    out += kVectorBytes;
  }
  while (left() >= kLaneCharacters) {
    const Decoded decoded = DecodedFrom(InBothLanes(LoadLane(position)));
    if (!IsZero(decoded.errors)) break;
    StoreLaneBytes(out, decoded.bytes);
    position += kLaneCharacters;
    out += kLaneBytes;
  }
  return {static_cast<std::size_t>(position - text), static_cast<std::size_t>(out - bytes)};
}

#else

namespace Kestrel {

// Linked, but never called: no other processor has these vectors.
template <class Char>
void EncodeLinesAvx2(const std::uint8_t*, std::size_t, Char*) {}
template <class Char>
std::size_t EncodePartOfLineAvx2(const std::uint8_t*, std::size_t, Char*) {
  return 0;
}
template <class Char>
Base64Progress DecodeGroupsAvx2(const Char*, std::size_t, std::uint8_t*) {
  return {};
}

#endif

template void EncodeLinesAvx2(const std::uint8_t*, std::size_t, char*);
template void EncodeLinesAvx2(const std::uint8_t*, std::size_t, char16_t*);
template std::size_t EncodePartOfLineAvx2(const std::uint8_t*, std::size_t, char*);
template std::size_t EncodePartOfLineAvx2(const std::uint8_t*, std::size_t, char16_t*);
template Base64Progress DecodeGroupsAvx2(const char*, std::size_t, std::uint8_t*);
template Base64Progress DecodeGroupsAvx2(const char16_t*, std::size_t, std::uint8_t*);

}  // namespace Kestrel
