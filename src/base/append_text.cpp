#include "base/append_text.h"

#include <array>
#include <charconv>

#include "base/hex_digits.h"
#include "base/text_conversion.h"

namespace Kestrel {
namespace {

/// Appends the bytes as they are. Returns whether all of them are ASCII.
bool AppendBytes(std::u16string& target, std::string_view text) {
  const std::size_t length = target.size();
  target.resize(length + text.size());
  char16_t* const appended = target.data() + length;
  unsigned char bits = 0;
  // The whole text, even after a byte that is not ASCII, because the compiler makes vector operations of such a loop.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    appended[i] = byte;
    bits |= byte;
  }
  return bits < 0x80;
}

void AppendDigits(std::u16string& target, auto number) {
  std::array<char, 24> digits;
  const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  AppendBytes(target, {digits.data(), result.ptr});
}

}  // namespace

void AppendText(std::u16string& target, std::string_view text) {
  const std::size_t length = target.size();
  // ASCII needs no conversion: it is the same in every ANSI code page.
  if (AppendBytes(target, text)) return;
  // A text that begins with NUL is an empty one to AnsiToWide.
  const std::size_t nuls = text.find_first_not_of('\0');
  target.resize(length + nuls);
  target += AnsiToWide(text.substr(nuls));
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
