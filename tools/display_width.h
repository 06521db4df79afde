/// Text measured in the cells of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnfind {

/// Cells that the text occupies: 2 for wide characters and pictographs, 0 for combining marks, 1 for all others.
/// Requires text without control characters.
std::size_t DisplayWidth(std::string_view utf8);
/// The text if it fits into `cells`, else as much as fits before a "…" that stands for the rest.
std::string ClipToWidth(std::string_view utf8, std::size_t cells);
/// As ClipToWidth, filled up with blanks to exactly `cells`.
std::string FitToWidth(std::string_view utf8, std::size_t cells);

}  // namespace tarnfind
