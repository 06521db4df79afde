#include "platform/linux/text.h"

#include <cstdlib>

#include "platform/code_pages.h"

namespace platform {

std::u16string WideText(std::string_view utf8) {
  std::u16string text(utf8.size(), u'\0');
  const int bytes = static_cast<int>(utf8.size());
  if (bytes > 0)
    text.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text.data(), bytes)));
  return text;
}

std::string Utf8Text(std::u16string_view text) {
  std::string utf8(text.size() * 3, '\0');
  const int units = static_cast<int>(text.size());
  if (units > 0)
    utf8.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), static_cast<int>(utf8.size()))));
  return utf8;
}

bool CopyWithNul(std::u16string_view text, char16_t* target, std::size_t room) {
  if (room <= text.size()) return false;
  text.copy(target, text.size());
  target[text.size()] = u'\0';
  return true;
}

std::u16string UpperCase(std::u16string_view text) {
  std::u16string upper(text);
  for (char16_t& unit : upper)
    if (unit >= u'a' && unit <= u'z') unit = static_cast<char16_t>(unit - u'a' + u'A');
  return upper;
}

std::string EnvironmentText(const char* name, const char* fallback) {
  const char* const value = std::getenv(name);
  return value && *value ? value : fallback;
}

}  // namespace platform
