/// The few COM types that the finding interfaces are made of, for C++17 and C11.
///
/// On Windows a wizard gets them from the system's own headers. On systems without COM, and inside this library on
/// every system (TARN_PLAIN_COM_TYPES), they are declared here with the same layout: the tables, widths and byte order
/// are the binary contract and do not depend on which declaration a compiler has seen.
///
/// Two names keep a wizard's source the same on every system: ULONG is the type of a reference count, and
/// OLESTR("text") is a literal of OLECHAR.
///
/// Strings  A BSTR points at UTF-16 code units followed by a NUL; the 32 bits before them hold its length in bytes.
///          SysFreeString frees it; freeing null does nothing. Text that a function returns belongs to its caller.
#pragma once

#if defined(_WIN32) && !defined(TARN_PLAIN_COM_TYPES)

// Before the others, which rely on it. Its macros rename functions such as GetUserName. It is included here so that the
// declarations of this library and a wizard's calls are renamed alike, in whichever order the wizard includes.
#include <windows.h>

#include <oleauto.h>
#include <unknwn.h>

#else

#include <stdint.h>

#if !defined(__cplusplus)
#include <uchar.h>
#endif

typedef int32_t HRESULT;
typedef uint32_t ULONG;
typedef char16_t OLECHAR;
typedef OLECHAR* BSTR;

#define OLESTR(text) u##text

typedef struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} GUID;
typedef GUID IID;

#if defined(__cplusplus)

static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4, "a GUID is 16 bytes in memory order");

inline bool operator==(const GUID& a, const GUID& b) {
  bool same = a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
  for (int i = 0; i < 8; ++i) same = same && a.Data4[i] == b.Data4[i];
  return same;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Positions 0 to 2 of every interface, callable on any thread. QueryInterface stores the object with a reference for
/// the caller and returns S_OK, or stores null and returns E_NOINTERFACE. AddRef and Release return the new count.
/// There is no virtual destructor: the table holds these three operations and nothing else.
struct IUnknown {
  virtual HRESULT QueryInterface(const IID& id, void** object) = 0;  ///< Position 0.
  virtual ULONG AddRef() = 0;                                        ///< Position 1.
  virtual ULONG Release() = 0;                                       ///< Position 2.

 protected:
  ~IUnknown() = default;
};

#else

#define S_OK ((HRESULT)0)
#define E_NOINTERFACE ((HRESULT)0x80004002)
#define E_POINTER ((HRESULT)0x80004003)
#define E_FAIL ((HRESULT)0x80004005)
#define E_OUTOFMEMORY ((HRESULT)0x8007000E)

static const IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

#endif

#if defined(_WIN32)

#if defined(__cplusplus)
extern "C" {
#endif
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringByteLen(const char* bytes, uint32_t byteLength);
uint32_t SysStringByteLen(BSTR text);
void SysFreeString(BSTR text);
#if defined(__cplusplus)
}
#endif

#else

#include <stdlib.h>
#include <string.h>

#if defined(__cplusplus)
#define TARN_INLINE inline
#define TARN_POINTER_CAST(type, value) reinterpret_cast<type>(value)
#else
#define TARN_INLINE static inline
#define TARN_POINTER_CAST(type, value) ((type)(void*)(value))
#endif

/// A string of byteLength bytes, copied from bytes; unspecified where bytes is null. Null where there is no memory.
TARN_INLINE BSTR SysAllocStringByteLen(const char* bytes, uint32_t byteLength) {
  const size_t length = byteLength;
  unsigned char* const block = TARN_POINTER_CAST(unsigned char*, malloc(sizeof byteLength + length + sizeof(OLECHAR)));
  if (!block) return TARN_POINTER_CAST(BSTR, block);
  memcpy(block, &byteLength, sizeof byteLength);
  if (bytes) memcpy(block + sizeof byteLength, bytes, length);
  memset(block + sizeof byteLength + length, 0, sizeof(OLECHAR));
  return TARN_POINTER_CAST(BSTR, block + sizeof byteLength);
}
/// A copy of a NUL-terminated text. Null for null, for 4 GiB and more, and where there is no memory.
TARN_INLINE BSTR SysAllocString(const OLECHAR* text) {
  uint32_t byteLength = 0;
  if (!text) return TARN_POINTER_CAST(BSTR, 0);
  for (const OLECHAR* unit = text; *unit; ++unit) {
    byteLength += sizeof *unit;
    if (byteLength == 0) return TARN_POINTER_CAST(BSTR, 0);  // 4 GiB, which the length cannot hold
  }
  return SysAllocStringByteLen(TARN_POINTER_CAST(const char*, text), byteLength);
}
/// Bytes without the terminator; 0 for null.
TARN_INLINE uint32_t SysStringByteLen(BSTR text) {
  uint32_t byteLength = 0;
  if (text) memcpy(&byteLength, TARN_POINTER_CAST(const unsigned char*, text) - sizeof byteLength, sizeof byteLength);
  return byteLength;
}
TARN_INLINE void SysFreeString(BSTR text) {
  if (text) free(TARN_POINTER_CAST(unsigned char*, text) - sizeof(uint32_t));
}

#undef TARN_INLINE
#undef TARN_POINTER_CAST

#endif

#endif
