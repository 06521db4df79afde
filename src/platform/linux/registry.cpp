#include "platform/registry.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "platform/code_pages.h"
#include "platform/error_codes.h"
#include "platform/linux/registry_file.h"
#include "platform/linux/text.h"

namespace platform {

struct RegistryKey {
  std::u16string path;  ///< upper case
  const RegistryValues* values;
};

namespace {

/// The file that TARN_REGISTRY names, read when the first key is opened.
const RegistryKeys& Registry() {
  static const RegistryKeys keys = ReadRegistryFile(EnvironmentText("TARN_REGISTRY", "").c_str());
  return keys;
}

bool IsText(std::uint32_t type) {
  return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

std::string AnsiText(std::u16string_view text) {
  const int units = static_cast<int>(text.size());
  if (units == 0) return {};
  std::string narrow(text.size() * 3, '\0');  // a unit becomes at most 3 bytes, in UTF-8
  const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), units, narrow.data(), static_cast<int>(narrow.size()));
  narrow.resize(static_cast<std::size_t>(bytes));
  return narrow;
}

std::string AnsiData(const RegistryValue& value) {
  if (!IsText(value.type)) return std::string(value.data.begin(), value.data.end());
  std::u16string text(value.data.size() / 2, u'\0');
  std::memcpy(text.data(), value.data.data(), text.size() * 2);
  return AnsiText(text);
}

/// Hands out a value's type and data, by the rules that RegQueryValueExW and RegEnumValueA share.
std::uint32_t Deliver(std::uint32_t valueType, const void* from, std::size_t size, std::uint32_t* type, void* data,
                      std::uint32_t* byteCount) {
  if (data && !byteCount) return ERROR_INVALID_PARAMETER;
  if (type) *type = valueType;
  if (!byteCount) return ERROR_SUCCESS;
  const std::uint32_t room = *byteCount;
  *byteCount = static_cast<std::uint32_t>(size);
  if (!data) return ERROR_SUCCESS;
  if (room < size) return ERROR_MORE_DATA;
  std::copy_n(static_cast<const std::uint8_t*>(from), size, static_cast<std::uint8_t*>(data));
  return ERROR_SUCCESS;
}

/// The value of a variable, whose name is found without regard to case, as on Windows; null where there is none.
const char* EnvironmentVariable(const std::string& name) {
  for (char** entry = environ; entry && *entry; ++entry)
    if (strncasecmp(*entry, name.c_str(), name.size()) == 0 && (*entry)[name.size()] == '=')
      return *entry + name.size() + 1;
  return nullptr;
}

std::u16string Expanded(std::u16string_view source) {
  std::u16string result;
  while (!source.empty()) {
    const std::size_t first = std::min(source.find(u'%'), source.size());
    result += source.substr(0, first);
    source.remove_prefix(first);
    const std::size_t second = source.find(u'%', 1);
    if (second == source.npos) {
      result += source;
      break;
    }
    if (const char* const value = EnvironmentVariable(Utf8Text(source.substr(1, second - 1)))) {
      result += WideText(value);
      source.remove_prefix(second + 1);
    } else {
      // Keeps the second sign, because it may begin the name of a variable.
      result += source.substr(0, second);
      source.remove_prefix(second);
    }
  }
  return result;
}

}  // namespace

std::uint32_t RegOpenKeyExW(RegistryKey* parent, const char16_t* path, std::uint32_t, RegistryKey** key) {
  std::u16string full = parent ? parent->path : std::u16string();
  if (!full.empty() && *path) full += u'\\';
  full += UpperCase(path);
  const auto found = Registry().find(full);
  if (found == Registry().end()) return ERROR_FILE_NOT_FOUND;
  *key = new (std::nothrow) RegistryKey{std::move(full), &found->second};
  return *key ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_MEMORY;
}

std::uint32_t RegQueryValueExW(RegistryKey* key, const char16_t* name, std::uint32_t* type, void* data,
                               std::uint32_t* byteCount) {
  const RegistryValue* const value = FindValue(*key->values, name ? name : u"");
  if (!value) return ERROR_FILE_NOT_FOUND;
  return Deliver(value->type, value->data.data(), value->data.size(), type, data, byteCount);
}

std::uint32_t RegEnumValueA(RegistryKey* key, std::uint32_t index, char* name, std::uint32_t* nameSize,
                            std::uint32_t* type, void* data, std::uint32_t* byteCount) {
  if (index >= key->values->size()) return ERROR_NO_MORE_ITEMS;
  const RegistryValue& value = (*key->values)[index];
  const std::string narrowName = AnsiText(value.name);
  if (*nameSize <= narrowName.size()) return ERROR_MORE_DATA;
  *nameSize = static_cast<std::uint32_t>(narrowName.size());
  std::memcpy(name, narrowName.c_str(), narrowName.size() + 1);
  const std::string narrowData = AnsiData(value);
  return Deliver(value.type, narrowData.data(), narrowData.size(), type, data, byteCount);
}

void RegCloseKey(RegistryKey* key) {
  delete key;
}

std::uint32_t ExpandEnvironmentStringsA(const char* source, char* target, std::uint32_t targetSize) {
  std::u16string wide(std::strlen(source) + 1, u'\0');
  const int room = static_cast<int>(wide.size());
  MultiByteToWideChar(CP_ACP, 0, source, room, wide.data(), room);
  const std::string expanded = AnsiText(Expanded(wide.c_str()));
  const auto needed = static_cast<std::uint32_t>(expanded.size() + 1);
  if (target && needed <= targetSize) std::memcpy(target, expanded.c_str(), needed);
  return needed;
}

std::uint32_t ExpandEnvironmentStringsW(const char16_t* source, char16_t* target, std::uint32_t targetSize) {
  const std::u16string expanded = Expanded(source);
  if (target) CopyWithNul(expanded, target, targetSize);
  return static_cast<std::uint32_t>(expanded.size() + 1);
}

}  // namespace platform
