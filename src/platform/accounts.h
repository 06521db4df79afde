/// The user that the calling thread runs as.
#pragma once

#include <cstdint>

namespace platform {

/// Each takes the room in units with the NUL; *units receives the length (GetUserNameW counts the NUL), or the room
/// that is needed. False on failure, with the last error set.
bool GetUserNameExSamCompatible(char16_t* name, std::uint32_t* units);
bool GetUserNameW(char16_t* name, std::uint32_t* units);
/// Security identifier of an account on the local machine. False with ERROR_INSUFFICIENT_BUFFER where sid or domain is
/// too small: the sizes needed (bytes, units) are then stored. ERROR_NONE_MAPPED for an unknown account.
bool LookupAccountNameW(const char16_t* account, void* sid, std::uint32_t* sidBytes, char16_t* domain,
                        std::uint32_t* domainUnits);

}  // namespace platform
