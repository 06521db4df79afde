#include "base/append_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "base/hex_digits.h"
#include "base/text_conversion.h"

namespace Kestrel {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

void AppendAscii(std::u16string& target, std::string_view text) {
  const std::size_t length = target.size();
  target.resize(length + text.size());
  std::copy(text.begin(), text.end(), target.data() + length);
}

void AppendDigits(std::u16string& target, auto number) {
  std::array<char, 24> digits;
  const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  AppendAscii(target, {digits.data(), result.ptr});
}

}  // namespace

void AppendText(std::u16string& target, std::string_view text) {
  // ASCII needs no conversion: it is the same in every ANSI code page.
  if (IsAscii(text)) {
    AppendAscii(target, text);
  } else {
    target += AnsiToWide(text);
  }
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
