#include "platform/errors.h"

#include "platform/windows/api.h"

namespace platform {

std::uint32_t GetLastError() {
  return ::GetLastError();
}

void SetLastError(std::uint32_t code) {
  ::SetLastError(code);
}

std::uint32_t FormatMessageW(std::uint32_t code, char16_t** text) {
  // With FORMAT_MESSAGE_ALLOCATE_BUFFER the system stores a pointer where a buffer is expected.
  constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM;
  return ::FormatMessageW(kFlags, nullptr, code, 0, reinterpret_cast<wchar_t*>(text), 0, nullptr);
}

void LocalFree(void* memory) {
  ::LocalFree(memory);
}

}  // namespace platform
