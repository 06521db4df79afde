/// Text measured in the cells of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnfind {

/// Cells that the text occupies: East Asian wide characters and pictographs 2, combining marks 0, everything else 1.
/// Requires text without control characters.
std::size_t DisplayWidth(std::string_view utf8);
/// The text if it fits into `cells`, else as much as fits before a "…" that stands for the rest.
std::string ClipToWidth(std::string_view utf8, std::size_t cells);
/// As ClipToWidth, filled up with blanks to exactly `cells`.
std::string FitToWidth(std::string_view utf8, std::size_t cells);

}  // namespace tarnfind
