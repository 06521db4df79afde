#include "platform/debugger.h"

#include "platform/windows/api.h"

namespace platform {

void OutputDebugStringW(const char16_t* text) {
  ::OutputDebugStringW(Wide(text));
}

void OutputDebugStringA(const char* text) {
  ::OutputDebugStringA(text);
}

}  // namespace platform
