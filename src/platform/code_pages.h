/// Conversion between a code page and UTF-16. The ANSI code page is the system's on Windows; on Linux it is the one
/// that TARN_ANSI_CODE_PAGE names.
///
/// Both functions return the number of units written, or the number needed where the size of the target is 0, and
/// convert a source of kNulTerminated length with its terminator. Both return 0 on failure, with the last error
/// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_FLAGS or ERROR_INVALID_PARAMETER. No text is refused: with flags 0 an
/// invalid UTF-8 sequence or an unpaired surrogate becomes U+FFFD, and a character that the ANSI code page lacks
/// becomes "?" or, on Windows, a similar one. Linux has no use for the flags of CP_ACP: a letter with a combining mark
/// is two characters. Thread-safe. Neither allocates, except Linux at the first use of CP_ACP.
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
