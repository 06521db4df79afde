/// Conversion between a code page and UTF-16.
///
/// Both functions return the number of units written, or needed when the target size is 0; 0 on failure, with the last
/// error ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_FLAGS, ERROR_INVALID_PARAMETER or ERROR_NO_UNICODE_TRANSLATION.
/// A source length of -1 means NUL-terminated, and the terminator is converted and counted too. With flags 0 an invalid
/// UTF-8 sequence or an unpaired surrogate becomes U+FFFD; a character that the ANSI code page lacks becomes "?".
/// Neither ever fails because of what the text says.
#pragma once

#include <cstdint>

namespace platform {

inline constexpr int kNulTerminated = -1;        ///< length of a source that ends with its first NUL
inline constexpr std::uint32_t CP_ACP = 0;       ///< the system's ANSI code page
inline constexpr std::uint32_t CP_UTF8 = 65001;  ///< flags must be 0
inline constexpr std::uint32_t MB_PRECOMPOSED = 0x1;
inline constexpr std::uint32_t WC_COMPOSITECHECK = 0x200;

int MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* source, int sourceBytes,
                        char16_t* target, int targetUnits);
int WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int sourceUnits,
                        char* target, int targetBytes);

}  // namespace platform
