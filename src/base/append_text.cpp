#include "base/append_text.h"

#include <array>
#include <charconv>

#include "base/hex_digits.h"
#include "base/text_conversion.h"

namespace Kestrel {
namespace {

/// Appends the pieces before the first one that is not ASCII. Returns how many characters. In pieces, because a string
/// that is made longer in place is filled with NULs first.
std::size_t AppendAscii(std::u16string& target, std::string_view text) {
  constexpr std::size_t kPiece = 64;
  std::array<char16_t, kPiece> piece;
  for (std::size_t done = 0; done < text.size(); done += kPiece) {
    const std::string_view part = text.substr(done, kPiece);
    unsigned char bits = 0;
    for (std::size_t i = 0; i < part.size(); ++i) {
      const auto byte = static_cast<unsigned char>(part[i]);
      piece[i] = byte;
      bits |= byte;
    }
    if (bits >= 0x80) return done;
    target.append(piece.data(), part.size());
  }
  return text.size();
}

void AppendDigits(std::u16string& target, auto number) {
  std::array<char, 24> digits;
  const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  AppendAscii(target, {digits.data(), result.ptr});
}

}  // namespace

void AppendText(std::u16string& target, std::string_view text) {
  const std::size_t length = target.size();
  // ASCII needs no conversion: it is the same in every ANSI code page.
  if (AppendAscii(target, text) == text.size()) return;
  target.resize(length);
  // A text that begins with NUL is an empty one to AnsiToWide.
  const std::size_t nuls = text.find_first_not_of('\0');
  const std::u16string wide = AnsiToWide(text.substr(nuls));
  target.append(nuls, u'\0').append(wide);
}

void AppendNumber(std::u16string& target, std::int64_t number) {
  AppendDigits(target, number);
}
void AppendNumber(std::u16string& target, std::uint64_t number) {
  AppendDigits(target, number);
}

void AppendText(std::u16string& target, const void* address) {
  const auto number = reinterpret_cast<std::uintptr_t>(address);
  for (int shift = 60; shift >= 0; shift -= 4) target += static_cast<char16_t>(kUpperHexDigits[number >> shift & 0xF]);
}

}  // namespace Kestrel
