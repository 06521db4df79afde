/// A search as one HTML file: the page with its style, its scripts, the lines and the pictures inside. It needs no
/// network and no other file.
///
/// Its Content-Security-Policy allows exactly the style and the scripts inside, by their hashes, and pictures from the
/// file itself. Lines may hold any text: each "<" in them is written as an escape, so that none ends the element that
/// they stand in. Passwords are masked, whatever the lines have.
///
/// Pictures become JPEGs of at most 320 x 240 pixels and 24 KiB. There are at most 500 of them, or one of each
/// camera where more cameras have one; of each camera the newest. So a report of 500 cameras stays below 20 MB.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

namespace tarnfind {

struct ReportSource {
  std::string lines;                              ///< path of the file with the lines of search --json; UTF-8
  std::optional<std::filesystem::path> pictures;  ///< folder of the files that they name; empty: no pictures
};

struct ReportCounts {
  std::size_t lines = 0;
  std::size_t pictures = 0;  ///< that are inside
};
/// Reads the lines twice, one at a time. Throws WrongUse with the number of the first line that is not of a search;
/// html then has the beginning of a page.
ReportCounts WriteReport(const ReportSource& source, std::ostream& html);

}  // namespace tarnfind
