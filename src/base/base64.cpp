#include "base/base64.h"

#include <array>

#include "base/base64_avx2.h"
#include "base/base64_avx512.h"
#include "platform/processor.h"

namespace Kestrel {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Meanings of a character that is not in the alphabet; all above the 6-bit values.
enum : std::uint8_t { kSkipped = 0x40, kTextEnd = 0x80, kInvalid = 0xC0 };

constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kInvalid);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) values[static_cast<std::uint8_t>(kAlphabet[i])] = std::uint8_t(i);
  values['\r'] = values['\n'] = kSkipped;
  values['='] = kTextEnd;
  return values;
}();

std::uint8_t ValueOf(char character) {
  return kValues[static_cast<std::uint8_t>(character)];
}
std::uint8_t ValueOf(char16_t unit) {
  return unit < kValues.size() ? kValues[unit] : std::uint8_t{kInvalid};
}

template <class Char>
Char* EncodeGroup(std::uint32_t group, Char* text) {
  for (int shift = 18; shift >= 0; shift -= 6) *text++ = static_cast<Char>(kAlphabet[group >> shift & 63]);
  return text;
}

/// Encodes at most one line's bytes, without a line end.
template <class Char>
Char* EncodeGroups(const std::uint8_t* bytes, std::size_t byteCount, Char* text) {
  for (; byteCount >= 3; bytes += 3, byteCount -= 3) {
    text = EncodeGroup(std::uint32_t{bytes[0]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[2], text);
  }
  if (byteCount == 0) return text;
  const std::uint32_t second = byteCount == 2 ? bytes[1] : 0u;
  text = EncodeGroup(std::uint32_t{bytes[0]} << 16 | second << 8, text);
  for (std::size_t missing = 3 - byteCount; missing > 0; --missing) text[-static_cast<std::ptrdiff_t>(missing)] = '=';
  return text;
}

template <class Char>
Char* EndLine(Char* text) {
  *text++ = '\r';
  *text++ = '\n';
  return text;
}

template <class Char>
void EncodeLines(const std::uint8_t* bytes, std::size_t lines, Char* text) {
  for (; lines > 0; --lines, bytes += kBase64LineBytes) text = EndLine(EncodeGroups(bytes, kBase64LineBytes, text));
}

template <class Char>
Char* Encode(const std::uint8_t* bytes, std::size_t byteCount, Char* text) {
  if (platform::HasAvx512Vbmi()) return EncodeAvx512(bytes, byteCount, text);
  const bool vectors = platform::HasAvx2();
  const std::size_t lines = byteCount / kBase64LineBytes;
  if (vectors) {
    EncodeLinesAvx2(bytes, lines, text);
  } else {
    EncodeLines(bytes, lines, text);
  }
  bytes += lines * kBase64LineBytes;
  text += lines * (kBase64LineCharacters + 2);
  const std::size_t rest = byteCount % kBase64LineBytes;
  const std::size_t done = vectors ? EncodePartOfLineAvx2(bytes, rest, text) : 0;
  text = EncodeGroups(bytes + done, rest - done, text + done / 3 * 4);
  // A rest of 55 or 56 bytes fills a line with its padding.
  return rest > kBase64LineBytes - 3 ? EndLine(text) : text;
}

/// What vectors decode of it: whole groups, and the line ends between whole lines.
template <class Char>
Base64Progress DecodeVectors(const Char* text, std::size_t characters, std::uint8_t* bytes) {
  if (platform::HasAvx512Vbmi()) return DecodeGroupsAvx512(text, characters, bytes);
  if (platform::HasAvx2()) return DecodeGroupsAvx2(text, characters, bytes);
  return {0, 0};
}

/// Decodes groups up to the first other character, and moves both positions behind what was decoded.
template <class Char>
void DecodeGroups(const Char*& text, const Char* end, std::uint8_t*& bytes) {
  const Base64Progress done = DecodeVectors(text, static_cast<std::size_t>(end - text), bytes);
  text += done.characters;
  bytes += done.bytes;
  if (platform::HasAvx512Vbmi()) return;  // 512-bit vectors leave no group that can be decoded
  for (; end - text >= 4; text += 4, bytes += 3) {
    const std::uint32_t a = ValueOf(text[0]), b = ValueOf(text[1]), c = ValueOf(text[2]), d = ValueOf(text[3]);
    if ((a | b | c | d) > 63) return;
    bytes[0] = static_cast<std::uint8_t>(a << 2 | b >> 4);
    bytes[1] = static_cast<std::uint8_t>(b << 4 | c >> 2);
    bytes[2] = static_cast<std::uint8_t>(c << 6 | d);
  }
}

template <class Char>
Base64Decoded Decode(std::basic_string_view<Char> whole, std::uint8_t* const bytes) {
  const Char* text = whole.data();
  const Char* const end = text + whole.size();
  std::uint8_t* out = bytes;
  std::uint32_t group = 0;  ///< values of an unfinished group, which a line end or the text's end interrupts
  int pending = 0;          ///< the number of these values
  bool success = true;
  while (text < end) {
    if (pending == 0) DecodeGroups(text, end, out);
    if (text == end) break;
    const std::uint8_t value = ValueOf(*text++);
    if (value == kSkipped) continue;
    if (value > 63) {
      success = value == kTextEnd;
      break;
    }
    group = group << 6 | value;
    if (++pending < 4) continue;
    *out++ = static_cast<std::uint8_t>(group >> 16);
    *out++ = static_cast<std::uint8_t>(group >> 8);
    *out++ = static_cast<std::uint8_t>(group);
    pending = 0;
  }
  if (pending > 1) *out++ = static_cast<std::uint8_t>(group << 6 * (4 - pending) >> 16);
  if (pending > 2) *out++ = static_cast<std::uint8_t>(group << 6 >> 8);
  return {static_cast<std::size_t>(out - bytes), success};
}

}  // namespace

std::size_t Base64EncodedLength(std::size_t byteCount) {
  const std::size_t characters = (byteCount / 3 + (byteCount % 3 != 0)) * 4;
  return characters + characters / kBase64LineCharacters * 2;
}

char* Base64EncodeTo(const void* bytes, std::size_t byteCount, char* text) {
  return Encode(static_cast<const std::uint8_t*>(bytes), byteCount, text);
}
char16_t* Base64EncodeTo(const void* bytes, std::size_t byteCount, char16_t* text) {
  return Encode(static_cast<const std::uint8_t*>(bytes), byteCount, text);
}

Base64Decoded Base64DecodeTo(std::string_view text, std::uint8_t* bytes) {
  return Decode(text, bytes);
}
Base64Decoded Base64DecodeTo(std::u16string_view text, std::uint8_t* bytes) {
  return Decode(text, bytes);
}

std::string Base64Encode(const void* bytes, std::size_t byteCount) {
  std::string text(Base64EncodedLength(byteCount), '\0');
  Base64EncodeTo(bytes, byteCount, text.data());
  return text;
}

bool Base64Decode(std::string_view text, std::vector<std::uint8_t>& bytes) {
  bytes.resize(Base64DecodedBound(text.size()));
  const Base64Decoded decoded = Base64DecodeTo(text, bytes.data());
  bytes.resize(decoded.byteCount);
  return decoded.success;
}

}  // namespace Kestrel
