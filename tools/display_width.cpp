#include "tools/display_width.h"

#include <algorithm>

#include "tools/display_width_table.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// Most characters lie below the first row of the table, so they need no search.
std::size_t CellWidth(char32_t codePoint) {
  if (codePoint < kWidths[0].first) return 1;
  const auto* const range = std::lower_bound(std::begin(kWidths), std::end(kWidths), codePoint,
                                             [](const WidthRange& r, char32_t value) { return r.last < value; });
  return range != std::end(kWidths) && codePoint >= range->first ? range->cells : 1;
}

/// Bytes of the longest beginning that needs at most `cells`.
std::size_t FittingBytes(std::string_view utf8, std::size_t cells) {
  std::size_t position = 0;
  while (position < utf8.size()) {
    std::size_t next = position;
    const std::size_t width = CellWidth(NextCodePoint(utf8, next));
    if (width > cells) break;
    cells -= width;
    position = next;
  }
  return position;
}

}  // namespace

std::size_t DisplayWidth(std::string_view utf8) {
  std::size_t cells = 0;
  for (std::size_t position = 0; position < utf8.size();) cells += CellWidth(NextCodePoint(utf8, position));
  return cells;
}

std::string ClipToWidth(std::string_view utf8, std::size_t cells) {
  if (FittingBytes(utf8, cells) == utf8.size()) return std::string(utf8);
  if (cells == 0) return {};
  return std::string(utf8.substr(0, FittingBytes(utf8, cells - 1))) + "…";
}

std::string FitToWidth(std::string_view utf8, std::size_t cells) {
  std::string result = ClipToWidth(utf8, cells);
  result.append(cells - DisplayWidth(result), ' ');
  return result;
}

}  // namespace tarnfind
