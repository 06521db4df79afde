#include "platform/modules.h"

#include "platform/windows/api.h"
// After windows.h, on which it relies.
#include <shlwapi.h>

namespace platform {
namespace {

HMODULE Module(ModuleHandle module) {
  return static_cast<HMODULE>(module);
}

}  // namespace

ModuleHandle ModuleContaining(const void* address) {
  MEMORY_BASIC_INFORMATION region;
  if (::VirtualQuery(address, &region, sizeof region) == 0 || region.State != MEM_COMMIT) return nullptr;
  return region.AllocationBase;
}

std::uint32_t GetModuleFileNameW(ModuleHandle module, char16_t* path, std::uint32_t units) {
  return ::GetModuleFileNameW(Module(module), Wide(path), units);
}

const char16_t* PathFindFileNameW(const char16_t* path) {
  return reinterpret_cast<const char16_t*>(::PathFindFileNameW(Wide(path)));
}

ModuleHandle LoadLibraryExW(const char16_t* path, std::uint32_t flags) {
  return ::LoadLibraryExW(Wide(path), nullptr, flags);
}

ModuleHandle GetModuleHandleW(const char16_t* name) {
  return ::GetModuleHandleW(Wide(name));
}

void* GetProcAddress(ModuleHandle module, const char* name) {
  return reinterpret_cast<void*>(::GetProcAddress(Module(module), name));
}

bool FreeLibrary(ModuleHandle module) {
  return ::FreeLibrary(Module(module)) != FALSE;
}

ModuleHandle ReferenceThisModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&ReferenceThisModule),
                       &module);
  return module;
}

std::uint32_t GetSystemDirectoryW(char16_t* path, std::uint32_t units) {
  return ::GetSystemDirectoryW(Wide(path), units);
}

}  // namespace platform
