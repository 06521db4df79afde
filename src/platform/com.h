/// BSTRs, and the free-threaded marshaler.
///
/// A BSTR points behind a 32-bit length in bytes and ends with a NUL unit. It is allocated so that every module of the
/// process can free it, because it crosses the library's boundary in both directions. A function that makes one returns
/// null where there is no memory; its caller frees it with SysFreeString. Thread-safe.
#pragma once

#include <cstdint>

namespace platform {

/// A copy of a NUL-terminated text; null for null.
char16_t* SysAllocString(const char16_t* text);
/// A string of byteLength bytes, copied from bytes. Where bytes is null its content is unspecified.
char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength);
/// Bytes without the terminator; 0 for null.
std::uint32_t SysStringByteLen(const char16_t* text);
/// Null is allowed.
void SysFreeString(char16_t* text);

/// outer: the controlling unknown, which is not counted. *marshaler receives the inner unknown with one reference for
/// the caller, or null on failure. Returns an HRESULT: always 0x80004001 (not implemented) on Linux.
std::int32_t CoCreateFreeThreadedMarshaler(void* outer, void** marshaler);

}  // namespace platform
