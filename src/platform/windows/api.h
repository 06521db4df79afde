/// Windows' headers, and casts between its types and ours. Include it after the headers of platform/, because Windows
/// defines their constants as macros.
#pragma once

#define SECURITY_WIN32
#define WIN32_LEAN_AND_MEAN
#define UNICODE
#ifndef NOMINMAX  // some standard libraries set it themselves
#define NOMINMAX
#endif

#include <winsock2.h>
// After winsock2.h, because Windows asks for this order.
#include <windows.h>

#include <cstdint>

namespace platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t) && alignof(wchar_t) == alignof(char16_t));

inline wchar_t* Wide(char16_t* text) {
  return reinterpret_cast<wchar_t*>(text);
}
inline const wchar_t* Wide(const char16_t* text) {
  return reinterpret_cast<const wchar_t*>(text);
}

/// The system's numbers are unsigned long, which has the same 32 bits.
inline DWORD* Dword(std::uint32_t* number) {
  static_assert(sizeof(DWORD) == sizeof(std::uint32_t));
  return reinterpret_cast<DWORD*>(number);
}

}  // namespace platform
