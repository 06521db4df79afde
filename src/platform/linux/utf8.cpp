#include "platform/linux/utf8.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace platform {
namespace {

static_assert(std::endian::native == std::endian::little, "the block functions take the first unit from the low bits");

constexpr char32_t kReplacement = 0xFFFD;

/// Texts are ASCII for the most part: it goes by blocks.
constexpr std::size_t kBlock = 16;

/// The counting forms have no target: the same code runs, and what it would store is left out.
template <class Unit>
class Writer {
 public:
  Writer(Unit* target, std::size_t room) : start_(target), next_(target), end_(target + room) {}
  void Put(char32_t unit) { *next_++ = static_cast<Unit>(unit); }
  /// Room for a whole block.
  bool HasBlock() const { return static_cast<std::size_t>(end_ - next_) >= kBlock; }
  /// Stores a block of which count units are taken.
  template <class From>
  void PutBlock(const From (&block)[kBlock], std::size_t count) {
    Unit converted[kBlock];
    for (std::size_t i = 0; i < kBlock; ++i) converted[i] = static_cast<Unit>(block[i]);
    std::memcpy(next_, converted, sizeof converted);
    next_ += count;
  }
  std::size_t Count() const { return static_cast<std::size_t>(next_ - start_); }

 private:
  Unit* start_;
  Unit* next_;
  Unit* end_;
};

class Counter {
 public:
  void Put(char32_t) { ++count_; }
  bool HasBlock() const { return true; }
  template <class From>
  void PutBlock(const From (&)[kBlock], std::size_t count) {
    count_ += count;
  }
  std::size_t Count() const { return count_; }

 private:
  std::size_t count_ = 0;
};

/// How many units at the beginning of a block are ASCII, by the bits that no ASCII unit has.
template <class Unit, std::uint64_t kHighBits>
std::size_t AsciiUnits(const Unit (&block)[kBlock]) {
  constexpr std::size_t kPerWord = sizeof(std::uint64_t) / sizeof(Unit);
  for (std::size_t i = 0; i < kBlock; i += kPerWord) {
    std::uint64_t word;
    std::memcpy(&word, block + i, sizeof word);
    word &= kHighBits;
    if (word) return i + static_cast<std::size_t>(std::countr_zero(word)) / (8 * sizeof(Unit));
  }
  return kBlock;
}

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

struct LeadByte {
  int length;            ///< of the sequence; 0: no sequence begins so
  unsigned char lowest;  ///< of the second byte
  unsigned char highest;
};

/// The second byte's range excludes overlong forms, surrogates and what lies above U+10FFFF.
LeadByte LeadByteOf(unsigned char byte) {
  if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
  if (byte < 0xE0) return {2, 0x80, 0xBF};
  if (byte < 0xF0)
    return {3, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
            static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF)};
  return {4, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
          static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
}

/// Takes the sequence that begins at next, or its maximal part where it is invalid.
char32_t TakeSequence(const unsigned char*& next, const unsigned char* end) {
  const unsigned char first = *next++;
  const LeadByte lead = LeadByteOf(first);
  if (lead.length == 0 || next == end || *next < lead.lowest || *next > lead.highest) return kReplacement;
  char32_t character = first & (0x7F >> lead.length);
  for (int i = 1; i < lead.length; ++i, ++next) {
    if (next == end || !IsContinuation(*next)) return kReplacement;
    character = character << 6 | (*next & 0x3F);
  }
  return character;
}

template <class Output>
std::size_t FromUtf8(std::string_view utf8, Output output) {
  auto next = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto end = next + utf8.size();
  while (next != end) {
    if (static_cast<std::size_t>(end - next) >= kBlock && output.HasBlock()) {
      unsigned char block[kBlock];
      std::memcpy(block, next, sizeof block);
      const std::size_t ascii = AsciiUnits<unsigned char, 0x8080808080808080>(block);
      output.PutBlock(block, ascii);
      next += ascii;
      if (ascii == kBlock) continue;
    }
    if (*next < 0x80) {
      output.Put(*next++);
      continue;
    }
    const char32_t character = TakeSequence(next, end);
    if (character < 0x10000) {
      output.Put(character);
    } else {
      output.Put(0xD7C0 + (character >> 10));
      output.Put(0xDC00 + (character & 0x3FF));
    }
  }
  return output.Count();
}

/// Takes the character that begins at next.
char32_t TakeCharacter(const char16_t*& next, const char16_t* end) {
  const char32_t unit = *next++;
  if ((unit & 0xF800) != 0xD800) return unit;
  if (unit >= 0xDC00 || next == end || (*next & 0xFC00) != 0xDC00) return kReplacement;
  return 0x10000 + ((unit - 0xD800) << 10) + (*next++ - 0xDC00U);
}

template <class Output>
std::size_t FromUtf16(std::u16string_view text, Output output) {
  const char16_t* next = text.data();
  const char16_t* const end = next + text.size();
  while (next != end) {
    if (static_cast<std::size_t>(end - next) >= kBlock && output.HasBlock()) {
      char16_t block[kBlock];
      std::memcpy(block, next, sizeof block);
      const std::size_t ascii = AsciiUnits<char16_t, 0xFF80FF80FF80FF80>(block);
      output.PutBlock(block, ascii);
      next += ascii;
      if (ascii == kBlock) continue;
    }
    const char32_t character = TakeCharacter(next, end);
    if (character < 0x80) {
      output.Put(character);
    } else if (character < 0x800) {
      output.Put(0xC0 | character >> 6);
      output.Put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
      output.Put(0xE0 | character >> 12);
      output.Put(0x80 | (character >> 6 & 0x3F));
      output.Put(0x80 | (character & 0x3F));
    } else {
      output.Put(0xF0 | character >> 18);
      output.Put(0x80 | (character >> 12 & 0x3F));
      output.Put(0x80 | (character >> 6 & 0x3F));
      output.Put(0x80 | (character & 0x3F));
    }
  }
  return output.Count();
}

}  // namespace

std::size_t Utf16LengthOf(std::string_view utf8) {
  return FromUtf8(utf8, Counter());
}

std::size_t Utf8ToUtf16(std::string_view utf8, char16_t* target, std::size_t room) {
  return FromUtf8(utf8, Writer(target, room));
}

std::size_t Utf8LengthOf(std::u16string_view text) {
  return FromUtf16(text, Counter());
}

std::size_t Utf16ToUtf8(std::u16string_view text, char* target, std::size_t room) {
  return FromUtf16(text, Writer(target, room));
}

}  // namespace platform
