#include "diagnostics/debug_out_settings.h"

#include <algorithm>
#include <new>
#include <utility>

#include "diagnostics/registry_value.h"

namespace Kestrel {
namespace {

constexpr char16_t kKey[] = u"Software\\Vantrell\\Tarn\\DebugOut";
constexpr char16_t kFilterKey[] = u"Filter";
constexpr char16_t kConsoleTimeMode[] = u"ConsoleTimeMode";
constexpr char16_t kDebugWindowSourcePrefix[] = u"DebugWindowSourcePrefix";

char UpperCase(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

void ReadClamped(const RegistryKey& key, const char16_t* name, std::uint32_t largest, std::uint32_t& setting) {
  if (const auto number = key.ReadNumber(name)) setting = std::min(*number, largest);
}

}  // namespace

constinit std::atomic<const DebugOutSettings*> DebugOutSettings::shared_{nullptr};
constinit std::atomic<bool> DebugOutReadyMark::set_{false};

bool DebugOutSettings::IgnoringCase::operator()(std::string_view a, std::string_view b) const {
  return std::ranges::lexicographical_compare(a, b, {}, UpperCase, UpperCase);
}

DebugOutSettings::DebugOutSettings() {
  try {
    const RegistryKey key(kKey);
    ReadClamped(key, kConsoleTimeMode, ctmDateAndTime, consoleTimeMode_);
    ReadClamped(key, kDebugWindowSourcePrefix, spExecutable, debugWindowSourcePrefix_);
    ReadFilters(RegistryKey(key, kFilterKey));
  } catch (const std::bad_alloc&) {  // made while the library is loaded, where no exception may leave
  }
  shared_.store(this, std::memory_order_release);
}

DebugOutSettings::~DebugOutSettings() {
  shared_.store(nullptr, std::memory_order_release);
}

void DebugOutSettings::ReadFilters(const RegistryKey& key) {
  for (std::uint32_t index = 0; auto entry = key.ReadEntry(index); ++index) {
    if (!entry->number || static_cast<std::int32_t>(*entry->number) < 0) continue;
    if (entry->name.empty()) {
      defaultLimit_ = *entry->number;
    } else {
      filters_.insert_or_assign(std::move(entry->name), *entry->number);
    }
  }
}

std::uint32_t DebugOutSettings::LimitOf(std::string_view source) const {
  const auto filter = filters_.find(source);
  return filter == filters_.end() ? defaultLimit_ : filter->second;
}

}  // namespace Kestrel
