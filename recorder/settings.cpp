#include "recorder/settings.h"

#include <cstdint>
#include <cstring>
#include <optional>

#include "diagnostics/registry_value.h"
#include "platform/error_codes.h"
#include "platform/registry.h"

namespace recorder {
namespace {

constexpr char16_t kKey[] = u"Software\\Vantrell\\Tarn\\Capture";
constexpr std::uint32_t kLongestPath = 32768;  // units with the terminator: the longest path of Windows

/// The text with environment variables replaced.
std::u16string Expanded(const std::u16string& text) {
  std::u16string expanded(kLongestPath, u'\0');
  const std::uint32_t units = platform::ExpandEnvironmentStringsW(text.c_str(), expanded.data(), kLongestPath);
  expanded.resize(units == 0 || units > kLongestPath ? 0 : units - 1);
  return expanded;
}

/// Empty where the variable is not set: the system leaves such a name as it stands.
std::u16string EnvironmentVariable(const char16_t* name) {
  const std::u16string reference = u'%' + std::u16string(name) + u'%';
  const std::u16string value = Expanded(reference);
  return value == reference ? std::u16string() : value;
}

std::u16string RegistryText(const char16_t* name) {
  platform::RegistryKey* key = nullptr;
  if (platform::RegOpenKeyExW(nullptr, kKey, platform::kReadKey64, &key) != platform::ERROR_SUCCESS) return {};
  char16_t text[1024];
  std::uint32_t type = 0;
  std::uint32_t byteCount = sizeof text;
  const std::uint32_t error = platform::RegQueryValueExW(key, name, &type, text, &byteCount);
  platform::RegCloseKey(key);
  if (error != platform::ERROR_SUCCESS || (type != platform::REG_SZ && type != platform::REG_EXPAND_SZ)) return {};
  std::u16string value(text, byteCount / sizeof(char16_t));
  value.resize(value.find_last_not_of(u'\0') + 1);
  return type == platform::REG_EXPAND_SZ ? Expanded(value) : value;
}

}  // namespace

Settings ReadSettings() {
  Settings settings;
  settings.file = EnvironmentVariable(u"TARN_CAPTURE");
  if (settings.file.empty()) settings.file = RegistryText(u"File");
  if (settings.file.empty()) return settings;
  const std::u16string secrets = EnvironmentVariable(u"TARN_CAPTURE_SECRETS");
  settings.secrets =
      secrets.empty() ? Kestrel::RegistryKey(kKey).ReadNumber(u"Secrets").value_or(0) != 0 : secrets == u"1";
  return settings;
}

}  // namespace recorder
