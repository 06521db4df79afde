/// Registry values as 32-bit numbers, whatever type they were stored with:
///
///     REG_DWORD, REG_BINARY   4 bytes, little-endian
///     REG_DWORD_BIG_ENDIAN    4 bytes, the most significant first
///     REG_QWORD               8 bytes, little-endian, within the signed 32-bit range
///     REG_SZ                  decimal, perhaps with a sign, within the signed 32-bit range; characters with the codes
///                             1 to 32 may stand in front, nothing behind
///     REG_EXPAND_SZ           the same after environment variables have been replaced
///     any other               no number
///
/// The result is 32 bits without a sign; a reader that wants a signed number converts it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/registry.h"

namespace Kestrel {

/// Char is the unit of texts in the data: char16_t for values read by a wide name, char (ANSI) for enumerated values.
template <class Char>
std::optional<std::uint32_t> NumberOfRegistryValue(std::uint32_t type, std::span<const std::uint8_t> data);

/// A key below HKEY_LOCAL_MACHINE, open for reading in the 64-bit view while the object lives. Where it cannot be
/// opened, every read finds nothing.
class RegistryKey {
 public:
  explicit RegistryKey(const char16_t* path);
  /// path is below the parent.
  RegistryKey(const RegistryKey& parent, const char16_t* path);
  ~RegistryKey();
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  /// Empty where there is no such value or it is no number.
  std::optional<std::uint32_t> ReadNumber(const char16_t* name) const;
  /// The value's four bytes as a number, whatever their type. Empty where the value does not have exactly four.
  std::optional<std::uint32_t> ReadFourBytes(const char16_t* name) const;

  struct Entry {
    std::string name;  ///< in the ANSI code page; empty for the key's default value
    std::optional<std::uint32_t> number;
  };
  /// The value at an index, in the registry's order; empty behind the last. A value above 1 MiB has no name and no
  /// number.
  std::optional<Entry> ReadEntry(std::uint32_t index) const;

 private:
  platform::RegistryKey* key_ = nullptr;
};

}  // namespace Kestrel
