/// UTF-8 to UTF-16 and back. Invalid text becomes U+FFFD: one for each unpaired surrogate, one for each byte that
/// begins no sequence, and one for the longest beginning of a sequence that breaks off (its maximal subpart).
///
/// The writing functions require room for the result, of which the other two give the length; they return its length.
/// None allocates or throws.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

std::size_t Utf16LengthOf(std::string_view utf8);
std::size_t Utf8ToUtf16(std::string_view utf8, char16_t* target, std::size_t room);

std::size_t Utf8LengthOf(std::u16string_view text);
std::size_t Utf16ToUtf8(std::u16string_view text, char* target, std::size_t room);

}  // namespace platform
