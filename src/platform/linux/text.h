/// Texts of the C library (names of files, users, hosts and variables), which are taken for UTF-8, and copies into the
/// room that a caller gives.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

std::u16string WideText(std::string_view utf8);
std::string Utf8Text(std::u16string_view text);

/// Copies text and a NUL where room units hold both. False, with nothing written, where they do not.
bool CopyWithNul(std::u16string_view text, char16_t* target, std::size_t room);

/// Upper case of the ASCII letters alone, whatever the locale.
std::u16string UpperCase(std::u16string_view text);

/// The environment variable, or fallback where it is not set or empty.
std::string EnvironmentText(const char* name, const char* fallback);

}  // namespace platform
