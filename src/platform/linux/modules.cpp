#include "platform/modules.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <string_view>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/address_info.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

constexpr char kDefaultSystemDirectory[] = "/usr/lib";

/// The socket library is part of the C library here. Its module has no file, only this handle and these functions.
char socketModule;
constexpr std::u16string_view kSocketModuleName = u"WS2_32";

void* SocketFunction(std::string_view name) {
  if (name == "GetAddrInfoW") return reinterpret_cast<void*>(&GetAddrInfoW);
  if (name == "FreeAddrInfoW") return reinterpret_cast<void*>(&FreeAddrInfoW);
  return nullptr;
}

bool IsSeparator(char16_t unit) {
  return unit == u'/' || unit == u'\\';
}

bool IsSocketModuleName(std::u16string_view name) {
  std::u16string upper = UpperCase(name);
  if (upper.ends_with(u".DLL")) upper.resize(upper.size() - 4);
  return upper == kSocketModuleName;
}

/// True for its name alone, and for its path in the default system directory.
bool IsSocketModulePath(const char16_t* path) {
  const char16_t* const name = PathFindFileNameW(path);
  const std::u16string_view folder(path, static_cast<std::size_t>(name - path));
  if (!IsSocketModuleName(name)) return false;
  return folder.empty() || folder.substr(0, folder.size() - 1) == WideText(kDefaultSystemDirectory);
}

std::string ExecutablePath() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  std::string_view found(path, length > 0 ? static_cast<std::size_t>(length) : 0);
  // The system adds this where the file was replaced, as an update of the program does.
  constexpr std::string_view kDeleted = " (deleted)";
  if (found.ends_with(kDeleted)) found.remove_suffix(kDeleted.size());
  return std::string(found);
}

std::string PathOf(ModuleHandle module) {
  if (module == &socketModule) return std::string(kDefaultSystemDirectory) + "/ws2_32.dll";
  link_map* entry = nullptr;
  if (module && dlinfo(module, RTLD_DI_LINKMAP, &entry) != 0) return {};
  // The executable's entry has no name.
  return entry && *entry->l_name ? entry->l_name : ExecutablePath();
}

template <class Result>
Result Failed(std::uint32_t code) {
  SetLastError(code);
  return Result{};
}

}  // namespace

ModuleHandle ModuleContaining(const void* address) {
  Dl_info info;
  void* entry = nullptr;
  if (!dladdr1(address, &info, &entry, RTLD_DL_LINKMAP) || !entry) return nullptr;
  // A handle of the loader is a link_map entry. Null stands for the executable, whose entry has no name.
  return *static_cast<link_map*>(entry)->l_name ? entry : nullptr;
}

std::uint32_t GetModuleFileNameW(ModuleHandle module, char16_t* path, std::uint32_t units) {
  const std::u16string full = WideText(PathOf(module));
  if (full.empty()) return Failed<std::uint32_t>(ERROR_MOD_NOT_FOUND);
  if (CopyWithNul(full, path, units)) return static_cast<std::uint32_t>(full.size());
  if (units > 0) CopyWithNul(std::u16string_view(full).substr(0, units - 1), path, units);
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return units;
}

const char16_t* PathFindFileNameW(const char16_t* path) {
  const char16_t* name = path;
  for (; *path; ++path)
    if (IsSeparator(path[0]) && path[1] && !IsSeparator(path[1])) name = path + 1;
  return name;
}

ModuleHandle LoadLibraryExW(const char16_t* path, std::uint32_t) {
  if (IsSocketModulePath(path)) return &socketModule;
  void* const module = dlopen(Utf8Text(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  return module ? module : Failed<ModuleHandle>(ERROR_MOD_NOT_FOUND);
}

ModuleHandle GetModuleHandleW(const char16_t* name) {
  if (name && IsSocketModuleName(name)) return &socketModule;
  const std::string file = name ? Utf8Text(name) : std::string();
  void* const module = dlopen(name ? file.c_str() : nullptr, RTLD_NOW | RTLD_NOLOAD);
  if (!module) return Failed<ModuleHandle>(ERROR_MOD_NOT_FOUND);
  dlclose(module);  // this handle is not counted
  return module;
}

void* GetProcAddress(ModuleHandle module, const char* name) {
  void* address = nullptr;
  if (module == &socketModule)
    address = SocketFunction(name);
  else if (module)
    address = dlsym(module, name);
  return address ? address : Failed<void*>(ERROR_PROC_NOT_FOUND);
}

bool FreeLibrary(ModuleHandle module) {
  if (module == &socketModule || (module && dlclose(module) == 0)) return true;
  return Failed<bool>(ERROR_INVALID_HANDLE);
}

ModuleHandle ReferenceThisModule() {
  const auto* const entry = static_cast<const link_map*>(ModuleContaining(&socketModule));
  return entry ? dlopen(entry->l_name, RTLD_NOW | RTLD_NOLOAD) : nullptr;
}

std::uint32_t GetSystemDirectoryW(char16_t* path, std::uint32_t units) {
  const std::u16string directory = WideText(EnvironmentText("TARN_SYSTEM_DIRECTORY", kDefaultSystemDirectory));
  const auto length = static_cast<std::uint32_t>(directory.size());
  return CopyWithNul(directory, path, units) ? length : length + 1;
}

}  // namespace platform
