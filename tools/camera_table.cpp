#include "tools/camera_table.h"

#include <algorithm>

#include "tools/display_width.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

struct Column {
  const char* title;
  std::size_t least;
  std::size_t wanted;
  std::string (*text)(const CameraSnapshot& camera, std::int32_t type);
};
/// Addresses are never narrowed; the texts share what is left.
constexpr std::array<Column, kCameraColumnCount> kColumns = {{
    {"MAC", 17, 17, [](const CameraSnapshot& camera, std::int32_t) { return camera.mac; }},
    {"IP", 15, 15, [](const CameraSnapshot& camera, std::int32_t) { return camera.ip; }},
    {"DHCP", 4, 4, [](const CameraSnapshot& camera, std::int32_t) { return std::string(camera.dhcp ? "yes" : "no"); }},
    {"Vendor", 6, 16, [](const CameraSnapshot& camera, std::int32_t) { return camera.vendor; }},
    {"Model", 8, 22, [](const CameraSnapshot& camera, std::int32_t) { return camera.model; }},
    {"Firmware", 6, 10, [](const CameraSnapshot& camera, std::int32_t) { return camera.firmware; }},
    {"Plug-in", 8, 17, [](const CameraSnapshot& camera, std::int32_t) { return camera.plugin; }},
    {"Type", 4, 4, [](const CameraSnapshot&, std::int32_t type) { return std::to_string(type); }},
}};
constexpr std::size_t kMarkWidth = 2;

}  // namespace

CameraTable::CameraTable(std::optional<int> terminalColumns) {
  std::size_t least = kMarkWidth;
  std::size_t wanted = kMarkWidth;
  for (const Column& column : kColumns) {
    least += column.least + 1;
    wanted += column.wanted + 1;
  }
  std::size_t spare = wanted - least;
  if (terminalColumns) {
    // The last cell of a line stays free: some terminals move on when it is filled.
    lineWidth_ = static_cast<std::size_t>(std::max(*terminalColumns - 1, 1));
    spare = std::min(spare, *lineWidth_ > least ? *lineWidth_ - least : 0);
  }
  for (std::size_t i = 0; i < kColumns.size(); ++i)
    widths_[i] = kColumns[i].least + (kColumns[i].wanted - kColumns[i].least) * spare / (wanted - least);
}

std::string CameraTable::Header(char mark) const {
  std::array<std::string, kCameraColumnCount> cells;
  std::transform(kColumns.begin(), kColumns.end(), cells.begin(), [](const Column& column) { return column.title; });
  return Line(mark, cells);
}

std::string CameraTable::Row(char mark, const CameraSnapshot& camera, std::int32_t type) const {
  std::array<std::string, kCameraColumnCount> cells;
  std::transform(kColumns.begin(), kColumns.end(), cells.begin(),
                 [&](const Column& column) { return Printable(column.text(camera, type)); });
  return Line(mark, cells);
}

std::string CameraTable::Line(char mark, const std::array<std::string, kCameraColumnCount>& cells) const {
  std::string line = mark ? std::string{mark, ' '} : std::string();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line += ' ';
    const std::size_t width = lineWidth_ ? widths_[i] : std::max(widths_[i], DisplayWidth(cells[i]));
    line += FitToWidth(cells[i], width);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return lineWidth_ ? ClipToWidth(line, *lineWidth_) : line;
}

}  // namespace tarnfind
