#include "platform/code_pages.h"

#include "platform/windows/api.h"

namespace platform {
namespace {

/// No flags where UTF-8 is the system's ANSI code page, because UTF-8 takes none.
std::uint32_t AllowedFlags(std::uint32_t codePage, std::uint32_t flags) {
  return codePage == CP_ACP && ::GetACP() == CP_UTF8 ? 0 : flags;
}

}  // namespace

int MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* source, int sourceBytes,
                        char16_t* target, int targetUnits) {
  return ::MultiByteToWideChar(codePage, AllowedFlags(codePage, flags), source, sourceBytes, Wide(target), targetUnits);
}

int WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int sourceUnits,
                        char* target, int targetBytes) {
  return ::WideCharToMultiByte(codePage, AllowedFlags(codePage, flags), Wide(source), sourceUnits, target, targetBytes,
                               nullptr, nullptr);
}

}  // namespace platform
