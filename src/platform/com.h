/// BSTRs, and the free-threaded marshaler.
///
/// A BSTR points behind a 32-bit length in bytes and ends with a NUL unit. It is allocated so that every module of the
/// process can free it: it crosses the library's boundary in both directions.
#pragma once

#include <cstdint>

namespace platform {

/// A copy of a NUL-terminated text. Null for null, and where there is no memory.
char16_t* SysAllocString(const char16_t* text);
/// A string of byteLength bytes copied from bytes (not written when bytes is null). Null where there is no memory.
char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength);
std::uint32_t SysStringByteLen(const char16_t* text);  ///< bytes without the terminator; 0 for null
void SysFreeString(char16_t* text);

/// outer: the controlling unknown. *marshaler receives the inner unknown, or stays null. Returns an HRESULT; on systems
/// without COM 0x80004001 (not implemented).
std::int32_t CoCreateFreeThreadedMarshaler(void* outer, void** marshaler);

}  // namespace platform
