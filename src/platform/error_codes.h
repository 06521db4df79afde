/// The system error codes that the library compares or makes itself; values of the Windows API.
#pragma once

#include <cstdint>

namespace platform {

inline constexpr std::uint32_t ERROR_SUCCESS = 0;
inline constexpr std::uint32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr std::uint32_t ERROR_INVALID_HANDLE = 6;
inline constexpr std::uint32_t ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr std::uint32_t ERROR_INVALID_PARAMETER = 87;
inline constexpr std::uint32_t ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr std::uint32_t ERROR_MOD_NOT_FOUND = 126;
inline constexpr std::uint32_t ERROR_PROC_NOT_FOUND = 127;
inline constexpr std::uint32_t ERROR_MORE_DATA = 234;
inline constexpr std::uint32_t ERROR_NO_MORE_ITEMS = 259;
inline constexpr std::uint32_t ERROR_MR_MID_NOT_FOUND = 317;
inline constexpr std::uint32_t ERROR_INVALID_FLAGS = 1004;
inline constexpr std::uint32_t ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr std::uint32_t ERROR_NONE_MAPPED = 1332;

}  // namespace platform
