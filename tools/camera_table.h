/// Cameras as rows of columns, for a terminal of any width and for plain lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/camera_snapshot.h"

namespace tarnfind {

inline constexpr std::size_t kCameraColumnCount = 8;

class CameraTable {
 public:
  /// terminalColumns: rows are clipped to it. Empty: columns have their natural width, and nothing is ever cut off.
  explicit CameraTable(std::optional<int> terminalColumns);

  /// mark: 0 leaves out the column of marks, here and in the rows.
  std::string Header(char mark) const;
  /// type: shown in place of the snapshot's own.
  std::string Row(char mark, const CameraSnapshot& camera, std::int32_t type) const;

 private:
  std::string Line(char mark, const std::array<std::string, kCameraColumnCount>& cells) const;

  std::optional<std::size_t> lineWidth_;
  std::array<std::size_t, kCameraColumnCount> widths_{};
};

}  // namespace tarnfind
