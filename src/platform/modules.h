/// Loaded modules and their files.
///
/// A handle is the system's; to GetModuleFileNameW null names the executable. On Linux the socket library ws2_32.dll,
/// whose functions are the C library's, is a module without a file: only the functions below know its handle.
///
/// Paths are NUL-terminated; sizes are units. A function fails with the thread's last error set. Thread-safe.
#pragma once

#include <cstdint>

namespace platform {

using ModuleHandle = void*;

/// Windows looks only in the folders of the program and the system and in those that the program has added. Linux
/// ignores the flag and looks where its loader does.
inline constexpr std::uint32_t LOAD_LIBRARY_SEARCH_DEFAULT_DIRS = 0x1000;

/// The module that contains an address. Requires an address in a module. On Linux null for the executable.
ModuleHandle ModuleContaining(const void* address);
/// Path of a module's file. Returns its length without the NUL. Where the room is too small it writes what fits,
/// perhaps without a NUL, and returns the room, with ERROR_INSUFFICIENT_BUFFER. 0 on failure.
std::uint32_t GetModuleFileNameW(ModuleHandle module, char16_t* path, std::uint32_t units);
/// The part of a path behind its last separator; points into path.
const char16_t* PathFindFileNameW(const char16_t* path);
/// Loads a module or counts it once more; the caller gives it back with FreeLibrary. Null on failure, with
/// ERROR_MOD_NOT_FOUND where there is none.
ModuleHandle LoadLibraryExW(const char16_t* path, std::uint32_t flags);
/// A module that is loaded already, not counted. Null on failure.
ModuleHandle GetModuleHandleW(const char16_t* name);
/// Null on failure, with ERROR_PROC_NOT_FOUND where the module lacks the function.
void* GetProcAddress(ModuleHandle module, const char* name);
bool FreeLibrary(ModuleHandle module);
/// Adds a reference on the module that this code is in: it stays loaded until FreeLibrary is called with the result.
/// Null where that fails, and on Linux in the executable, which is never unloaded.
ModuleHandle ReferenceThisModule();
/// Length without the NUL; where the room is too small, the room needed with it; 0 on failure.
std::uint32_t GetSystemDirectoryW(char16_t* path, std::uint32_t units);

}  // namespace platform
