/// Loaded modules and their files.
#pragma once

#include <cstdint>
#include <string>
#include <typeinfo>

namespace platform {

using ModuleHandle = void*;

inline constexpr std::uint32_t LOAD_LIBRARY_SEARCH_DEFAULT_DIRS = 0x1000;

/// The module that contains an address, or null (which names the executable) where the address is in none.
ModuleHandle ModuleContaining(const void* address);
/// Path of a module's file (null: the executable's). Returns its length without the NUL; the size of the room where
/// that is too small, 0 on failure.
std::uint32_t GetModuleFileNameW(ModuleHandle module, char16_t* path, std::uint32_t units);
/// The part of a path behind its last separator.
const char16_t* PathFindFileNameW(const char16_t* path);
/// Null on failure, with the last error set.
ModuleHandle LoadLibraryExW(const char16_t* path, std::uint32_t flags);
ModuleHandle GetModuleHandleW(const char16_t* name);
void* GetProcAddress(ModuleHandle module, const char* name);
bool FreeLibrary(ModuleHandle module);
/// Adds a reference on the module that this code is in: it stays loaded until FreeLibrary is called with the result.
/// Null where that fails, and in the executable, which is never unloaded.
ModuleHandle ReferenceThisModule();
/// Length without the NUL, the room needed where that is too small, 0 on failure.
std::uint32_t GetSystemDirectoryW(char16_t* path, std::uint32_t units);

/// The qualified name of a type, as it stands in the source ("Kestrel::BufferException").
std::string UndecoratedTypeName(const std::type_info& type);

}  // namespace platform
