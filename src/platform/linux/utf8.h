/// UTF-8 to UTF-16 and back. Whatever does not encode a character becomes U+FFFD: each maximal part of a UTF-8 sequence
/// that could begin one, or a byte that could not, and each unpaired surrogate.
///
/// The writing functions require that the result fits into room; they return its length. None allocates.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

std::size_t Utf16LengthOf(std::string_view utf8);
std::size_t Utf8ToUtf16(std::string_view utf8, char16_t* target, std::size_t room);

std::size_t Utf8LengthOf(std::u16string_view text);
std::size_t Utf16ToUtf8(std::u16string_view text, char* target, std::size_t room);

}  // namespace platform
