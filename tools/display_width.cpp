#include "tools/display_width.h"

#include <algorithm>

#include "tools/text.h"

namespace tarnfind {

namespace {

/// Character ranges that do not occupy one cell; in order, without overlap.
struct WidthRange {
  char32_t first;
  char32_t last;
  std::size_t cells;
};
constexpr WidthRange kWidths[] = {
    {0x0300, 0x036F, 0},    // combining marks
    {0x1100, 0x115F, 2},    // Hangul initial consonants
    {0x1AB0, 0x1AFF, 0},    // combining marks
    {0x1DC0, 0x1DFF, 0},    // combining marks
    {0x20D0, 0x20FF, 0},    // combining marks for symbols
    {0x2E80, 0x303E, 2},    // radicals, CJK punctuation
    {0x3041, 0x33FF, 2},    // kana, compatibility forms
    {0x3400, 0x4DBF, 2},    // ideographs
    {0x4E00, 0xA4CF, 2},    // ideographs, Yi
    {0xA960, 0xA97F, 2},    // Hangul
    {0xAC00, 0xD7A3, 2},    // Hangul
    {0xF900, 0xFAFF, 2},    // compatibility ideographs
    {0xFE00, 0xFE0F, 0},    // variation selectors
    {0xFE20, 0xFE2F, 0},    // combining half marks
    {0xFE30, 0xFE6F, 2},    // compatibility forms
    {0xFF01, 0xFF60, 2},    // full-width forms
    {0xFFE0, 0xFFE6, 2},    // full-width signs
    {0x1F300, 0x1F64F, 2},  // pictographs
    {0x1F680, 0x1F6FF, 2},  // pictographs of transport
    {0x1F900, 0x1F9FF, 2},  // pictographs
    {0x20000, 0x3FFFD, 2},  // ideographs
};

std::size_t CellWidth(char32_t codePoint) {
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
