#include "platform/code_pages.h"

#include "platform/windows/api.h"

namespace platform {

int MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* source, int sourceBytes,
                        char16_t* target, int targetUnits) {
  return ::MultiByteToWideChar(codePage, flags, source, sourceBytes, Wide(target), targetUnits);
}

int WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int sourceUnits,
                        char* target, int targetBytes) {
  return ::WideCharToMultiByte(codePage, flags, Wide(source), sourceUnits, target, targetBytes, nullptr, nullptr);
}

}  // namespace platform
