#include "platform/registry.h"

#include "platform/windows/api.h"

namespace platform {
namespace {

HKEY Key(RegistryKey* key) {
  return reinterpret_cast<HKEY>(key);
}

/// Windows returns these error codes as signed numbers.
std::uint32_t Result(LSTATUS status) {
  return static_cast<std::uint32_t>(status);
}

}  // namespace

std::uint32_t RegOpenKeyExW(RegistryKey* parent, const char16_t* path, std::uint32_t access, RegistryKey** key) {
  const HKEY root = parent ? Key(parent) : HKEY_LOCAL_MACHINE;
  return Result(::RegOpenKeyExW(root, Wide(path), 0, access, reinterpret_cast<HKEY*>(key)));
}

std::uint32_t RegQueryValueExW(RegistryKey* key, const char16_t* name, std::uint32_t* type, void* data,
                               std::uint32_t* byteCount) {
  return Result(
      ::RegQueryValueExW(Key(key), Wide(name), nullptr, Dword(type), static_cast<BYTE*>(data), Dword(byteCount)));
}

std::uint32_t RegEnumValueA(RegistryKey* key, std::uint32_t index, char* name, std::uint32_t* nameSize,
                            std::uint32_t* type, void* data, std::uint32_t* byteCount) {
  return Result(::RegEnumValueA(Key(key), index, name, Dword(nameSize), nullptr, Dword(type), static_cast<BYTE*>(data),
                                Dword(byteCount)));
}

void RegCloseKey(RegistryKey* key) {
  ::RegCloseKey(Key(key));
}

std::uint32_t ExpandEnvironmentStringsA(const char* source, char* target, std::uint32_t targetSize) {
  return ::ExpandEnvironmentStringsA(source, target, targetSize);
}

std::uint32_t ExpandEnvironmentStringsW(const char16_t* source, char16_t* target, std::uint32_t targetSize) {
  return ::ExpandEnvironmentStringsW(Wide(source), Wide(target), targetSize);
}

}  // namespace platform
