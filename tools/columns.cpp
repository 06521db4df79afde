#include "tools/columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tools/arguments.h"
#include "tools/failure.h"
#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {

namespace {

std::uint64_t Ticks(WallTime time) {
  return static_cast<std::uint64_t>(time.time_since_epoch().count());
}

std::string LowerCase(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

}  // namespace

const Column kColumns[] = {
    {"mac", "MAC", 17, 17, Told::kMac, [](const FoundCamera& f) { return f.camera.mac; }},
    {"ip", "IP", 15, 15, Told::kAssembled, [](const FoundCamera& f) { return f.camera.ip; },
     [](const FoundCamera& f) { return std::uint64_t{ParseIpAddress(f.camera.ip).value_or(0)}; }},
    {"dhcp", "DHCP", 4, 4, Told::kEverything,
     [](const FoundCamera& f) { return std::string(f.camera.dhcp ? "yes" : "no"); }},
    {"vendor", "Vendor", 6, 16, Told::kAssembled, [](const FoundCamera& f) { return f.camera.vendor; }},
    {"model", "Model", 8, 22, Told::kEverything, [](const FoundCamera& f) { return f.camera.model; }},
    {"firmware", "Firmware", 6, 10, Told::kEverything, [](const FoundCamera& f) { return f.camera.firmware; }},
    {"plugin", "Plug-in", 8, 17, Told::kAssembled, [](const FoundCamera& f) { return f.camera.plugin; }},
    {"type", "Type", 4, 4, Told::kMac,
     [](const FoundCamera& f) { return f.typeKnown ? std::to_string(f.type) : std::string("?"); },
     [](const FoundCamera& f) { return static_cast<std::uint64_t>(f.type); }},
    {"first", "First", 8, 8, Told::kMac, [](const FoundCamera& f) { return ClockTime(f.firstSeen); },
     [](const FoundCamera& f) { return Ticks(f.firstSeen); }},
    {"last", "Last", 8, 8, Told::kMac, [](const FoundCamera& f) { return ClockTime(f.lastSeen); },
     [](const FoundCamera& f) { return Ticks(f.lastSeen); }},
    {"events", "Events", 6, 6, Told::kMac, [](const FoundCamera& f) { return std::to_string(f.events); },
     [](const FoundCamera& f) { return std::uint64_t{f.events}; }},
};

std::string CellText(const Column& column, const FoundCamera& found) {
  return found.camera.told < column.needs ? "?" : column.text(found);
}

const Column* FindColumn(std::string_view name) {
  const auto* const column =
      std::find_if(std::begin(kColumns), std::end(kColumns), [&](const Column& c) { return c.name == name; });
  return column == std::end(kColumns) ? nullptr : column;
}

std::string ColumnNames() {
  std::array<std::string_view, std::size(kColumns)> names;
  std::transform(std::begin(kColumns), std::end(kColumns), names.begin(), [](const Column& c) { return c.name; });
  return fmt::format("{}", fmt::join(names, ", "));
}

void SortBy(const Column& column, std::vector<const FoundCamera*>& cameras) {
  std::sort(cameras.begin(), cameras.end(), [&](const FoundCamera* a, const FoundCamera* b) {
    if (column.number) {
      const std::uint64_t left = column.number(*a), right = column.number(*b);
      return left != right ? left < right : a->arrival < b->arrival;
    }
    const std::string left = CellText(column, *a), right = CellText(column, *b);
    return left != right ? left < right : a->arrival < b->arrival;
  });
}

FoundCameras::Filter FilterOf(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals == std::string::npos ? 0 : equals);
  const Column* const column = FindColumn(name);
  if (!name.empty() && !column)
    throw WrongUse(fmt::format("there is no column \"{}\"; columns are {}", Printable(name), ColumnNames()));
  const std::string wanted = LowerCase(text.substr(equals == std::string::npos ? 0 : equals + 1));
  return [column, wanted](const FoundCamera& found) {
    const auto matches = [&](const Column& c) {
      return LowerCase(CellText(c, found)).find(wanted) != std::string::npos;
    };
    return column ? matches(*column) : std::any_of(std::begin(kColumns), std::end(kColumns), matches);
  };
}

}  // namespace tarnfind
