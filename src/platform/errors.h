/// The calling thread's last error, and the system's text for an error code. The codes are those of Windows on both
/// systems (error_codes.h).
#pragma once

#include <cstdint>

namespace platform {

/// The code that was set last; a function that succeeds need not set one.
std::uint32_t GetLastError();
void SetLastError(std::uint32_t code);

/// The system's text for a system error, a socket error or an HRESULT. A text that needs inserts is a failure, because
/// none are given. On Windows in the system's language; on Linux in English, for the codes that the library can meet.
/// *text receives a NUL-terminated text, which the caller frees with LocalFree. Returns its length in units, 0 on
/// failure (ERROR_MR_MID_NOT_FOUND for an unknown code); *text is then unspecified. The text usually ends in "\r\n".
std::uint32_t FormatMessageW(std::uint32_t code, char16_t** text);
void LocalFree(void* memory);

}  // namespace platform
