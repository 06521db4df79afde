#include "diagnostics/registry_value.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/error_codes.h"

namespace Kestrel {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Number = std::optional<std::uint32_t>;

/// Room in bytes for a name and for a value, at the first attempt and at most. A larger value is no number.
constexpr std::uint32_t kFirstRoom = 64;
constexpr std::uint32_t kMostRoom = 1 << 20;

/// Little-endian.
std::uint64_t ReadInteger(Bytes data) {
  std::uint64_t value = 0;
  for (std::size_t i = data.size(); i > 0; --i) value = value << 8 | data[i - 1];
  return value;
}

Number InSignedRange(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value < Limits::min() || value > Limits::max()) return {};
  return static_cast<std::uint32_t>(value);
}

Number FromDword(Bytes data) {
  if (data.size() != 4) return {};
  return static_cast<std::uint32_t>(ReadInteger(data));
}

Number FromBigEndianDword(Bytes data) {
  if (data.size() != 4) return {};
  return std::uint32_t{data[0]} << 24 | std::uint32_t{data[1]} << 16 | std::uint32_t{data[2]} << 8 | data[3];
}

Number FromQword(Bytes data) {
  if (data.size() != 8) return {};
  return InSignedRange(static_cast<std::int64_t>(ReadInteger(data)));
}

/// The text of a value ends at its first NUL, or with the data. A cut unit at the end is ignored.
template <class Char>
std::basic_string<Char> TextOf(Bytes data) {
  std::basic_string<Char> text;
  for (; data.size() >= sizeof(Char); data = data.subspan(sizeof(Char))) {
    const auto unit = static_cast<Char>(ReadInteger(data.first(sizeof(Char))));
    if (unit == 0) break;
    text += unit;
  }
  return text;
}

template <class Char>
Number FromDecimal(std::basic_string_view<Char> text) {
  constexpr std::int64_t kBeyondRange = std::int64_t{1} << 32;
  while (!text.empty() && text.front() >= 1 && text.front() <= 32) text.remove_prefix(1);
  const bool negative = text.starts_with(Char{'-'});
  if (negative || text.starts_with(Char{'+'})) text.remove_prefix(1);
  if (text.empty()) return {};
  std::int64_t value = 0;
  for (const Char unit : text) {
    if (unit < Char{'0'} || unit > Char{'9'}) return {};
    value = std::min(value * 10 + (unit - Char{'0'}), kBeyondRange);
  }
  return InSignedRange(negative ? -value : value);
}

template <class Char>
Number FromText(Bytes data) {
  return FromDecimal<Char>(TextOf<Char>(data));
}

std::uint32_t ExpandVariables(const char* source, char* target, std::uint32_t room) {
  return platform::ExpandEnvironmentStringsA(source, target, room);
}
std::uint32_t ExpandVariables(const char16_t* source, char16_t* target, std::uint32_t room) {
  return platform::ExpandEnvironmentStringsW(source, target, room);
}

template <class Char>
Number FromExpandedText(Bytes data) {
  const std::basic_string<Char> source = TextOf<Char>(data);
  std::vector<Char> expanded(kFirstRoom);
  std::uint32_t needed = ExpandVariables(source.c_str(), expanded.data(), kFirstRoom);
  if (needed > expanded.size() && needed <= kMostRoom) {
    expanded.resize(needed);
    needed = ExpandVariables(source.c_str(), expanded.data(), needed);
  }
  if (needed == 0 || needed > expanded.size()) return {};
  // needed may count more than the one NUL that ends the text.
  const std::basic_string_view<Char> text(expanded.data(), needed);
  return FromDecimal<Char>(text.substr(0, text.find(Char{0})));
}

struct TypeRule {
  std::uint32_t type;
  Number (*read)(Bytes data);
};
template <class Char>
constexpr TypeRule kTypeRules[] = {
    {platform::REG_SZ, FromText<Char>},
    {platform::REG_EXPAND_SZ, FromExpandedText<Char>},
    {platform::REG_BINARY, FromDword},
    {platform::REG_DWORD, FromDword},
    {platform::REG_DWORD_BIG_ENDIAN, FromBigEndianDword},
    {platform::REG_QWORD, FromQword},
};

}  // namespace

template <class Char>
Number NumberOfRegistryValue(std::uint32_t type, Bytes data) {
  for (const TypeRule& rule : kTypeRules<Char>)
    if (rule.type == type) return rule.read(data);
  return {};
}
template Number NumberOfRegistryValue<char>(std::uint32_t type, Bytes data);
template Number NumberOfRegistryValue<char16_t>(std::uint32_t type, Bytes data);

RegistryKey::RegistryKey(const char16_t* path) {
  if (platform::RegOpenKeyExW(nullptr, path, platform::kReadKey64, &key_) != platform::ERROR_SUCCESS) key_ = nullptr;
}

RegistryKey::RegistryKey(const RegistryKey& parent, const char16_t* path) {
  // With a null parent the path would name a key below the root.
  if (!parent.key_) return;
  if (platform::RegOpenKeyExW(parent.key_, path, platform::kReadKey64, &key_) != platform::ERROR_SUCCESS)
    key_ = nullptr;
}

RegistryKey::~RegistryKey() {
  if (key_) platform::RegCloseKey(key_);
}

Number RegistryKey::ReadNumber(const char16_t* name) const {
  if (!key_) return {};
  for (std::uint32_t room = kFirstRoom; room <= kMostRoom;) {
    std::vector<std::uint8_t> data(room);
    std::uint32_t type = platform::REG_NONE;
    std::uint32_t size = room;
    const std::uint32_t error = platform::RegQueryValueExW(key_, name, &type, data.data(), &size);
    if (error == platform::ERROR_SUCCESS) return NumberOfRegistryValue<char16_t>(type, Bytes(data).first(size));
    if (error != platform::ERROR_MORE_DATA) return {};
    room = std::max(size, room * 2);
  }
  return {};
}

Number RegistryKey::ReadFourBytes(const char16_t* name) const {
  if (!key_) return {};
  std::uint8_t data[4];
  std::uint32_t size = sizeof data;
  if (platform::RegQueryValueExW(key_, name, nullptr, data, &size) != platform::ERROR_SUCCESS) return {};
  return FromDword(Bytes(data).first(size));
}

std::optional<RegistryKey::Entry> RegistryKey::ReadEntry(std::uint32_t index) const {
  if (!key_) return {};
  for (std::uint32_t room = kFirstRoom; room <= kMostRoom;) {
    std::vector<std::uint8_t> data(room);
    std::string name(room, '\0');
    std::uint32_t type = platform::REG_NONE;
    std::uint32_t size = room;
    std::uint32_t length = room;
    const std::uint32_t error = platform::RegEnumValueA(key_, index, name.data(), &length, &type, data.data(), &size);
    if (error == platform::ERROR_SUCCESS)
      return Entry{name.substr(0, length), NumberOfRegistryValue<char>(type, Bytes(data).first(size))};
    if (error != platform::ERROR_MORE_DATA) return {};
    // The name or the data may have been too long; size tells only about the data.
    room = std::max(size, room * 2);
  }
  return Entry{};
}

}  // namespace Kestrel
