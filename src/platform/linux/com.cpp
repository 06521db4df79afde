#include "platform/com.h"

#include "tarn/com_types.h"

namespace platform {

char16_t* SysAllocString(const char16_t* text) {
  return ::SysAllocString(text);
}

char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength) {
  return ::SysAllocStringByteLen(static_cast<const char*>(bytes), byteLength);
}

std::uint32_t SysStringByteLen(const char16_t* text) {
  return ::SysStringByteLen(const_cast<char16_t*>(text));
}

void SysFreeString(char16_t* text) {
  ::SysFreeString(text);
}

std::int32_t CoCreateFreeThreadedMarshaler(void*, void** marshaler) {
  *marshaler = nullptr;
  return static_cast<std::int32_t>(0x80004001U);
}

}  // namespace platform
