#include "platform/linux/utf8.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/linux/utf16_avx2.h"
#include "platform/linux/utf8_avx2.h"
#include "platform/processor.h"

namespace platform {
namespace {

static_assert(std::endian::native == std::endian::little, "the first unit of a word is in its low bits");

constexpr char32_t kReplacement = 0xFFFD;

/// Most text is ASCII, which is copied in blocks: 16 bytes of the source in one register.
template <class Unit>
constexpr std::size_t kBlockUnits = 16 / sizeof(Unit);

/// By way of arrays of its own, which cannot overlap, so that the compiler makes one vector operation of the loop.
template <class From, class To>
void StoreAscii(const From* from, To* target) {
  From block[kBlockUnits<From>];
  To stored[kBlockUnits<From>];
  std::memcpy(block, from, sizeof block);
  for (std::size_t i = 0; i < kBlockUnits<From>; ++i) stored[i] = static_cast<To>(block[i]);
  std::memcpy(target, stored, sizeof stored);
}

/// In every unit of a word, the bits that are 0 in ASCII.
template <class Unit>
constexpr std::uint64_t kNotAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;

template <class Unit>
class Writer {
 public:
  Writer(Unit* target, std::size_t room) : start_(target), next_(target), end_(target + room) {}
  bool HasRoom(std::size_t units) const { return static_cast<std::size_t>(end_ - next_) >= units; }
  void Put(char32_t unit) { *next_++ = static_cast<Unit>(unit); }
  /// Stores a whole block, of which count units are part of the result.
  template <class From>
  void PutAscii(const From* block, std::size_t count) {
    StoreAscii(block, next_);
    next_ += count;
  }
  /// Stores a whole block, whose units are already there except for the last count.
  template <class From>
  void PutLastAscii(const From* block, std::size_t count) {
    next_ += count;
    StoreAscii(block, next_ - kBlockUnits<From>);
  }
  /// Copies whole runs with vectors. Returns the number of units copied, which may be 0.
  std::size_t PutLongRun(const unsigned char* from, std::size_t units) {
    const std::size_t room = static_cast<std::size_t>(end_ - next_);
    const std::size_t copied = HasAvx2() ? CopyAsciiAvx2(from, std::min(units, room), next_) : 0;
    next_ += copied;
    return copied;
  }
  /// Converts with vectors as far as they can. Returns the place reached, which may be next.
  const char16_t* PutBlocks(const char16_t* next, const char16_t* end) {
    if (end - next < kNarrowAvx2Units || !HasAvx2()) return next;
    const Narrowed narrowed = NarrowAvx2(next, end, next_, end_);
    next_ = narrowed.target;
    return narrowed.from;
  }
  const unsigned char* PutBlocks(const unsigned char* next, const unsigned char* end) {
    if (end - next < kWidenAvx2Bytes || !HasAvx2()) return next;
    const Widened widened = WidenAvx2(next, end, next_, end_);
    next_ = widened.target;
    return widened.from;
  }
  std::size_t Count() const { return static_cast<std::size_t>(next_ - start_); }

 private:
  Unit* start_;
  Unit* next_;
  Unit* end_;
};

/// Stands in for a writer where only the length is asked.
class Counter {
 public:
  bool HasRoom(std::size_t) const { return true; }
  void Put(char32_t) { ++count_; }
  template <class From>
  void PutAscii(const From*, std::size_t count) {
    count_ += count;
  }
  template <class From>
  void PutLastAscii(const From*, std::size_t count) {
    count_ += count;
  }
  std::size_t PutLongRun(const unsigned char*, std::size_t) { return 0; }
  template <class From>
  const From* PutBlocks(const From* next, const From*) {
    return next;
  }
  std::size_t Count() const { return count_; }

 private:
  std::size_t count_ = 0;
};

/// Units at the beginning of a block that are ASCII.
template <class Unit>
std::size_t AsciiUnits(const Unit* block) {
  std::uint64_t words[2];
  std::memcpy(words, block, sizeof words);
  words[0] &= kNotAscii<Unit>;
  words[1] &= kNotAscii<Unit>;
  if ((words[0] | words[1]) == 0) return kBlockUnits<Unit>;
  const int bits = words[0] ? std::countr_zero(words[0]) : 64 + std::countr_zero(words[1]);
  return static_cast<std::size_t>(bits) / (8 * sizeof(Unit));
}

/// Copies ASCII up to the first other unit, or until less than a block is left of the source or of the room. Returns
/// the place reached. What is left after a block of ASCII is copied with units of that block.
template <class Unit, class Output>
const Unit* CopyAscii(const Unit* next, const Unit* end, Output& output) {
  constexpr std::size_t kUnits = kBlockUnits<Unit>;
  const auto left = [&] { return static_cast<std::size_t>(end - next); };
  std::size_t ascii = 0;
  while (left() >= kUnits && output.HasRoom(kUnits)) {
    ascii = AsciiUnits(next);
    output.PutAscii(next, ascii);
    next += ascii;
    if (ascii < kUnits) return next;
  }
  if (ascii < kUnits || left() >= kUnits || AsciiUnits(end - kUnits) < kUnits) return next;
  output.PutLastAscii(end - kUnits, left());
  return end;
}

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

/// A decoded character and the bytes it took; for an invalid sequence U+FFFD and the length of its maximal subpart.
struct Sequence {
  char32_t character;
  std::ptrdiff_t length;
};

/// The length of the sequence that a byte begins, and the range of its second byte. The range excludes overlong forms,
/// surrogates and characters above U+10FFFF. Length 1: no sequence begins with the byte.
struct LeadByte {
  std::ptrdiff_t length;
  unsigned char lowest;
  unsigned char highest;
};

constexpr LeadByte LeadByteOf(unsigned char byte) {
  if (byte < 0xC2 || byte > 0xF4) return {1, 0, 0};
  if (byte < 0xE0) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte < 0xF0) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {4, 0x80, 0xBF};
}

/// Requires a byte above 0x7F.
Sequence Decode(const unsigned char* from, const unsigned char* end) {
  const LeadByte lead = LeadByteOf(*from);
  const std::ptrdiff_t left = end - from;
  if (lead.length == 1 || left < 2 || from[1] < lead.lowest || from[1] > lead.highest) return {kReplacement, 1};
  char32_t character = (*from & (0x7FU >> lead.length)) << 6 | (from[1] & 0x3FU);
  for (std::ptrdiff_t i = 2; i < lead.length; ++i) {
    if (i == left || !IsContinuation(from[i])) return {kReplacement, i};
    character = character << 6 | (from[i] & 0x3FU);
  }
  return {character, lead.length};
}

template <class Output>
std::size_t FromUtf8(std::string_view utf8, Output output) {
  auto next = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto end = next + utf8.size();
  // A long text may be ASCII for long.
  if (utf8.size() >= kAvx2Run) next += output.PutLongRun(next, utf8.size());
  while ((next = CopyAscii(next, end, output)) != end && (next = output.PutBlocks(next, end)) != end) {
    do {
      if (*next < 0x80) {
        output.Put(*next++);
        continue;
      }
      const Sequence sequence = Decode(next, end);
      next += sequence.length;
      if (sequence.character < 0x10000) {
        output.Put(sequence.character);
      } else {
        output.Put(0xD7C0 + (sequence.character >> 10));
        output.Put(0xDC00 + (sequence.character & 0x3FF));
      }
    } while (next != end && (*next >= 0x80 || end - next < std::ptrdiff_t{kBlockUnits<char>}));
  }
  return output.Count();
}

/// Decodes one character: one above U+FFFF took two units, any other took one.
char32_t Decode(const char16_t* from, const char16_t* end) {
  const char32_t unit = *from;
  if ((unit & 0xF800) != 0xD800) return unit;
  if (unit >= 0xDC00 || end - from < 2 || (from[1] & 0xFC00) != 0xDC00) return kReplacement;
  return 0x10000 + ((unit - 0xD800) << 10) + (from[1] - 0xDC00U);
}

template <class Output>
void PutUtf8(char32_t character, Output& output) {
  const auto continuation = [&](int shift) { output.Put(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    output.Put(character);
  } else if (character < 0x800) {
    output.Put(0xC0 | character >> 6);
    continuation(0);
  } else if (character < 0x10000) {
    output.Put(0xE0 | character >> 12);
    continuation(6);
    continuation(0);
  } else {
    output.Put(0xF0 | character >> 18);
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

template <class Output>
std::size_t FromUtf16(std::u16string_view text, Output output) {
  const char16_t* next = text.data();
  const char16_t* const end = next + text.size();
  while ((next = output.PutBlocks(next, end)) != end && (next = CopyAscii(next, end, output)) != end) {
    do {
      const char32_t character = Decode(next, end);
      next += character < 0x10000 ? 1 : 2;
      PutUtf8(character, output);
    } while (next != end && (*next >= 0x80 || end - next < std::ptrdiff_t{kBlockUnits<char16_t>}));
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
