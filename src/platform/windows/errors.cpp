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
  // With the first flag the system takes the address of the pointer in place of a buffer.
  constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM;
  return ::FormatMessageW(kFlags, nullptr, code, 0, reinterpret_cast<wchar_t*>(text), 0, nullptr);
}

void LocalFree(void* memory) {
  ::LocalFree(memory);
}

}  // namespace platform
