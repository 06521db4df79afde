#include "base/checked_string.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string>

#include "base/exceptions.h"

namespace Kestrel {
namespace {

constexpr std::size_t kMaxUnits = std::numeric_limits<std::int32_t>::max();
constexpr const char* kCopyContext = "Kestrel::CheckedStringCchCopyEx";
constexpr const char* kPrintfContext = "Kestrel::CheckedStringCchPrintfEx";

template <class Char, class SourceChar>
BufferRest<Char> Copy(BufferRest<Char> target, std::basic_string_view<SourceChar> text, const char* context) {
  if (target.units == 0 || target.units > kMaxUnits) ThrowSystemError(STRSAFE_E_INVALID_PARAMETER, context);
  text = text.substr(0, text.find(SourceChar{}));
  const std::size_t fitting = std::min(text.size(), target.units - 1);
  Char* const terminator = std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(fitting),
                                          target.position, [](SourceChar unit) { return static_cast<Char>(unit); });
  *terminator = 0;
  if (fitting < text.size()) ThrowSystemError(STRSAFE_E_INSUFFICIENT_BUFFER, context);
  return {terminator, target.units - fitting};
}

std::string Format(const char* format, std::va_list arguments) {
  std::array<char, 512> text;  // every message of the library fits
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  std::string result(text.data(), std::min(static_cast<std::size_t>(std::max(length, 0)), text.size() - 1));
  if (length > 0 && static_cast<std::size_t>(length) > result.size()) {
    result.resize(static_cast<std::size_t>(length));
    std::vsnprintf(result.data(), result.size() + 1, format, again);
  }
  va_end(again);
  return result;
}

}  // namespace

BufferRest<char> CheckedStringCchCopyEx(BufferRest<char> target, std::string_view text) {
  return Copy(target, text, kCopyContext);
}

BufferRest<char16_t> CheckedStringCchCopyEx(BufferRest<char16_t> target, std::u16string_view text) {
  return Copy(target, text, kCopyContext);
}

BufferRest<char> CheckedStringCchPrintfEx(BufferRest<char> target, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = Format(format, arguments);
  va_end(arguments);
  return Copy(target, std::string_view(text), kPrintfContext);
}

BufferRest<char16_t> CheckedStringCchPrintfEx(BufferRest<char16_t> target, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = Format(format, arguments);
  va_end(arguments);
  return Copy(target, std::string_view(text), kPrintfContext);
}

}  // namespace Kestrel
