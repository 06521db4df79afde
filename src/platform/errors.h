/// The calling thread's last error, and the system's text for an error code.
#pragma once

#include <cstdint>

namespace platform {

std::uint32_t GetLastError();
void SetLastError(std::uint32_t code);

/// The system's text for a code (buffer allocated by the system, no inserts, neutral language).
/// *text receives a NUL-terminated text to be freed with LocalFree; the result is its length in units, 0 on failure.
/// The text usually ends in "\r\n".
std::uint32_t FormatMessageW(std::uint32_t code, char16_t** text);
void LocalFree(void* memory);

}  // namespace platform
