/// Cameras as rows of columns, for a terminal of any width and for plain lines.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/columns.h"

namespace tarnfind {

/// What stands before a row. change 0: no column of marks.
struct RowMark {
  char change = 0;
  bool sharedIp = false;  ///< another camera has the same IP address
};

class CameraTable {
 public:
  /// terminalColumns: rows are clipped to it. Empty: each column has its wanted width, and a longer text is not cut.
  /// withTimes: the columns that tell of the search too, where the terminal is wide enough.
  explicit CameraTable(std::optional<int> terminalColumns, bool withTimes = false);

  std::string Header(RowMark mark) const;
  std::string Row(RowMark mark, const FoundCamera& found) const;

 private:
  std::string Line(RowMark mark, const std::vector<std::string>& cells) const;

  std::optional<std::size_t> lineWidth_;
  std::vector<std::size_t> widths_;  ///< of the columns shown, from the first one on
};

}  // namespace tarnfind
