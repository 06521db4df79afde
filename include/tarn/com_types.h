/// The few COM types that the finding interfaces are made of.
///
/// On Windows a wizard gets them from the system's own headers. On systems without COM, and inside this library on
/// every system (TARN_PLAIN_COM_TYPES), they are declared here with the same layout: the tables, widths and byte order
/// are the binary contract and do not depend on which declaration a compiler has seen.
///
/// Strings  A BSTR points at UTF-16 code units followed by a NUL; the 32 bits before them hold its length in bytes.
///          SysFreeString frees it; freeing null does nothing. Text that a function returns belongs to its caller.
#pragma once

#if defined(_WIN32) && !defined(TARN_PLAIN_COM_TYPES)

#include <oleauto.h>
#include <unknwn.h>

#else

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

using HRESULT = std::int32_t;
using OLECHAR = char16_t;
using BSTR = OLECHAR*;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4, "a GUID is 16 bytes in memory order");

using IID = GUID;

inline bool operator==(const GUID& a, const GUID& b) {
  bool same = a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
  for (int i = 0; i < 8; ++i) same = same && a.Data4[i] == b.Data4[i];
  return same;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Positions 0 to 2 of every interface. AddRef and Release return the new count and may be called on any thread.
/// There is no virtual destructor: the table holds these three operations and nothing else.
struct IUnknown {
  virtual HRESULT QueryInterface(const IID& id, void** object) = 0;
  virtual std::uint32_t AddRef() = 0;
  virtual std::uint32_t Release() = 0;

 protected:
  ~IUnknown() = default;
};

#if defined(_WIN32)
extern "C" {
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringByteLen(const char* bytes, std::uint32_t byteLength);
std::uint32_t SysStringByteLen(BSTR text);
void SysFreeString(BSTR text);
}
#else
/// A string of byteLength bytes, copied from bytes unless that is null. Null where there is no memory.
inline BSTR SysAllocStringByteLen(const char* bytes, std::uint32_t byteLength) {
  auto* const block =
      static_cast<unsigned char*>(std::malloc(sizeof byteLength + std::size_t{byteLength} + sizeof(OLECHAR)));
  if (!block) return nullptr;
  std::memcpy(block, &byteLength, sizeof byteLength);
  if (bytes) std::memcpy(block + sizeof byteLength, bytes, byteLength);
  std::memset(block + sizeof byteLength + byteLength, 0, sizeof(OLECHAR));
  return reinterpret_cast<BSTR>(block + sizeof byteLength);
}
/// A copy of a NUL-terminated text. Null for null, and where there is no memory.
inline BSTR SysAllocString(const OLECHAR* text) {
  if (!text) return nullptr;
  const std::size_t units = std::char_traits<OLECHAR>::length(text);
  return SysAllocStringByteLen(reinterpret_cast<const char*>(text),
                               static_cast<std::uint32_t>(units * sizeof(OLECHAR)));
}
/// Bytes without the terminator; 0 for null.
inline std::uint32_t SysStringByteLen(BSTR text) {
  std::uint32_t byteLength = 0;
  if (text)
    std::memcpy(&byteLength, reinterpret_cast<const unsigned char*>(text) - sizeof byteLength, sizeof byteLength);
  return byteLength;
}
inline void SysFreeString(BSTR text) {
  if (text) std::free(reinterpret_cast<unsigned char*>(text) - sizeof(std::uint32_t));
}
#endif

#endif
