#include "platform/com.h"

#include "platform/windows/api.h"
// After windows.h, on which they rely.
#include <objbase.h>
#include <oleauto.h>

namespace platform {

char16_t* SysAllocString(const char16_t* text) {
  return reinterpret_cast<char16_t*>(::SysAllocString(Wide(text)));
}

char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength) {
  return reinterpret_cast<char16_t*>(::SysAllocStringByteLen(static_cast<const char*>(bytes), byteLength));
}

std::uint32_t SysStringByteLen(const char16_t* text) {
  return ::SysStringByteLen(const_cast<wchar_t*>(Wide(text)));
}

void SysFreeString(char16_t* text) {
  ::SysFreeString(Wide(text));
}

std::int32_t CoCreateFreeThreadedMarshaler(void* outer, void** marshaler) {
  *marshaler = nullptr;
  return ::CoCreateFreeThreadedMarshaler(static_cast<IUnknown*>(outer), reinterpret_cast<IUnknown**>(marshaler));
}

}  // namespace platform
