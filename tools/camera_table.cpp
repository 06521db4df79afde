#include "tools/camera_table.h"

#include <algorithm>

#include "tools/display_width.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::size_t kMarkWidth = 2;

/// Cells that the first `count` columns take, with the marks and a blank behind each.
std::size_t LineWidth(std::size_t count, std::size_t Column::*width) {
  std::size_t cells = kMarkWidth;
  for (std::size_t i = 0; i < count; ++i) cells += kColumns[i].*width + 1;
  return cells;
}

}  // namespace

CameraTable::CameraTable(std::optional<int> terminalColumns, bool withTimes) {
  // The last cell of a line stays free, because some terminals begin a new line when it is filled.
  if (terminalColumns) lineWidth_ = static_cast<std::size_t>(std::max(*terminalColumns - 1, 1));
  const bool timesFit = !lineWidth_ || *lineWidth_ >= LineWidth(std::size(kColumns), &Column::least);
  widths_.resize(withTimes && timesFit ? std::size(kColumns) : kFirstTimeColumn);

  const std::size_t least = LineWidth(widths_.size(), &Column::least);
  const std::size_t room = LineWidth(widths_.size(), &Column::wanted) - least;
  std::size_t spare = room;
  if (lineWidth_) spare = std::min(room, *lineWidth_ > least ? *lineWidth_ - least : 0);
  for (std::size_t i = 0; i < widths_.size(); ++i)
    widths_[i] = kColumns[i].least + (kColumns[i].wanted - kColumns[i].least) * spare / room;
}

std::string CameraTable::Header(RowMark mark) const {
  std::vector<std::string> cells;
  for (std::size_t i = 0; i < widths_.size(); ++i) cells.emplace_back(kColumns[i].title);
  return Line(mark, cells);
}

std::string CameraTable::Row(RowMark mark, const FoundCamera& found) const {
  std::vector<std::string> cells;
  for (std::size_t i = 0; i < widths_.size(); ++i) cells.push_back(Printable(CellText(kColumns[i], found)));
  return Line(mark, cells);
}

std::string CameraTable::Line(RowMark mark, const std::vector<std::string>& cells) const {
  std::string line;
  if (mark.change) line = {mark.change, mark.sharedIp ? '!' : ' '};
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line += ' ';
    const std::size_t width = lineWidth_ ? widths_[i] : std::max(widths_[i], DisplayWidth(cells[i]));
    line += FitToWidth(cells[i], width);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return lineWidth_ ? ClipToWidth(line, *lineWidth_) : line;
}

}  // namespace tarnfind
