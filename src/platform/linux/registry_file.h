/// A registry in the text form that registry editors export and import, version 5.00:
///
///     Windows Registry Editor Version 5.00
///
///     ; a comment
///     [HKEY_LOCAL_MACHINE\Software\Vendor\Product]
///     @="the default value"
///     "Text"="quotes \" and backslashes \\ are escaped"
///     "Number"=dword:0000000a
///     "Bytes"=hex:01,02,03        (a list of bytes may go on in the next line, behind a backslash)
///     "Other"=hex(b):01,00,00,00,00,00,00,00
///     "Gone"=-
///
/// hex(N) gives a value type by its number; its bytes are stored as they stand, so text in it is UTF-16 with its NUL.
/// A line that is none of these is skipped; so is everything below a root other than HKEY_LOCAL_MACHINE. A key comes
/// with all keys above it, and [-…] removes one with all below it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct RegistryValue {
  std::u16string name;  ///< empty: the key's default value
  std::uint32_t type;
  std::vector<std::uint8_t> data;
};

/// In the order of the file.
using RegistryValues = std::vector<RegistryValue>;

/// By the path below HKEY_LOCAL_MACHINE in upper case.
using RegistryKeys = std::map<std::u16string, RegistryValues, std::less<>>;

/// content: little-endian UTF-16 with a byte-order mark, else UTF-8.
RegistryKeys ParseRegistryFile(std::string_view content);

/// No keys where the path names no file, a file that cannot be read, or one of more than 16 MiB. Only a regular file is
/// read, because a folder has no bytes and a device or a pipe may have no end.
RegistryKeys ReadRegistryFile(const char* path);

/// The value of that name, without regard to case; null where there is none.
const RegistryValue* FindValue(const RegistryValues& values, std::u16string_view name);

}  // namespace platform
