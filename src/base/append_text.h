/// Appends values to wide text, as a stream of the plain C locale writes them:
///
///     text, characters      as they are; narrow ones are widened with the ANSI code page; a null pointer gives nothing
///     integers, bool        decimal
///     any other pointer     16 hexadecimal digits, upper case
///
/// Errors: SystemException where the system refuses to widen a text; the target is untouched then.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace Kestrel {

void AppendText(std::u16string& target, std::string_view text);
void AppendNumber(std::u16string& target, std::int64_t number);
void AppendNumber(std::u16string& target, std::uint64_t number);
/// An address. A pointer to text takes one of the overloads below instead.
void AppendText(std::u16string& target, const void* address);

inline void AppendText(std::u16string& target, std::u16string_view text) {
  target += text;
}
inline void AppendText(std::u16string& target, const char* text) {
  if (text) AppendText(target, std::string_view(text));
}
inline void AppendText(std::u16string& target, const char16_t* text) {
  if (text) target += text;
}
inline void AppendText(std::u16string& target, char character) {
  AppendText(target, std::string_view(&character, 1));
}
inline void AppendText(std::u16string& target, char16_t character) {
  target += character;
}

void AppendText(std::u16string& target, std::integral auto number) {
  using Widest = std::conditional_t<std::is_signed_v<decltype(number)>, std::int64_t, std::uint64_t>;
  AppendNumber(target, static_cast<Widest>(number));
}

}  // namespace Kestrel
