/// The user that the calling thread runs as. Windows: the thread's token. Linux: the effective user, as the password
/// database has it, in the form HOST\user.
///
/// Sizes are in units, or in bytes for a security identifier. Each function returns false on failure, with the thread's
/// last error set. Thread-safe.
#pragma once

#include <cstdint>

namespace platform {

/// The name with its domain. *units: in, the room with the NUL; out, the length without it. ERROR_MORE_DATA where there
/// is too little room; *units then says how much is needed, with the NUL.
bool GetUserNameExSamCompatible(char16_t* name, std::uint32_t* units);
/// The name alone. *units: in, the room with the NUL; out, the length with it. ERROR_INSUFFICIENT_BUFFER where there is
/// too little room; *units then says how much is needed.
bool GetUserNameW(char16_t* name, std::uint32_t* units);
/// Looks up an account, named with or without its domain: its security identifier in the binary form of Windows, and
/// its domain. The sizes: in, the room; out, the bytes and the units without the NUL. ERROR_INSUFFICIENT_BUFFER where
/// either has too little room; both sizes then say how much is needed, the domain's with the NUL. ERROR_NONE_MAPPED for
/// an unknown account.
bool LookupAccountNameW(const char16_t* account, void* sid, std::uint32_t* sidBytes, char16_t* domain,
                        std::uint32_t* domainUnits);

}  // namespace platform
