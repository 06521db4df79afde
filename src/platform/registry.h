/// Reading the registry below HKEY_LOCAL_MACHINE, in the 64-bit view.
///
/// On Windows it is the system's. On Linux it is the file that TARN_REGISTRY names, read once, when the first key is
/// opened; without it, or where it cannot be read, there are no keys.
///
/// The Reg functions return ERROR_SUCCESS or an error code and leave the thread's last error alone. Every key that was
/// opened is closed with RegCloseKey. All are thread-safe.
#pragma once

#include <cstdint>

namespace platform {

struct RegistryKey;  ///< an open key; opaque

inline constexpr std::uint32_t kReadKey64 = 0x20119;  ///< KEY_READ and the 64-bit view

enum RegistryValueType : std::uint32_t {
  REG_NONE = 0,
  REG_SZ = 1,
  REG_EXPAND_SZ = 2,
  REG_BINARY = 3,
  REG_DWORD = 4,
  REG_DWORD_BIG_ENDIAN = 5,
  REG_LINK = 6,
  REG_MULTI_SZ = 7,
  REG_QWORD = 11,
};

/// parent null: HKEY_LOCAL_MACHINE. path: names separated by backslashes, without regard to case. Linux ignores access.
std::uint32_t RegOpenKeyExW(RegistryKey* parent, const char16_t* path, std::uint32_t access, RegistryKey** key);
/// *byteCount: in, the size of data; out, the size of the value. ERROR_MORE_DATA where data is too small (data null:
/// only type and size are asked for). Text is UTF-16, usually with its NUL, but that is the writer's choice.
std::uint32_t RegQueryValueExW(RegistryKey* key, const char16_t* name, std::uint32_t* type, void* data,
                               std::uint32_t* byteCount);
/// Value number index in the registry's order; its name, and its data if that is text, in the ANSI code page.
/// *nameSize: in, the room including the NUL; out, the length without it. ERROR_NO_MORE_ITEMS behind the last,
/// ERROR_MORE_DATA where name or data is too small; data and *byteCount as with RegQueryValueExW.
std::uint32_t RegEnumValueA(RegistryKey* key, std::uint32_t index, char* name, std::uint32_t* nameSize,
                            std::uint32_t* type, void* data, std::uint32_t* byteCount);
void RegCloseKey(RegistryKey* key);

/// Replace %NAME% by the environment variable of that name, without regard to case; an unknown one stays as it stands.
/// Return the room needed in units with the NUL, or more: the narrow form of Windows may count too many. Where that is
/// within targetSize, target holds the text up to its first NUL, otherwise its content is unspecified. 0 on failure.
/// The narrow form is in the ANSI code page.
std::uint32_t ExpandEnvironmentStringsA(const char* source, char* target, std::uint32_t targetSize);
std::uint32_t ExpandEnvironmentStringsW(const char16_t* source, char16_t* target, std::uint32_t targetSize);

}  // namespace platform
