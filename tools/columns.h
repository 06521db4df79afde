/// The columns of cameras: what tables show, and what --sort and --filter name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/found_cameras.h"

namespace tarnfind {

struct Column {
  const char* name;
  const char* title;
  std::size_t least;   ///< width in cells, on a narrow terminal
  std::size_t wanted;  ///< on a wide one
  Told needs;          ///< the cell is unknown where less has been told
  std::string (*text)(const FoundCamera& found);
  /// Orders the column; null: by text.
  std::uint64_t (*number)(const FoundCamera& found) = nullptr;
};
/// Addresses are never narrowed; the texts share what is left.
extern const Column kColumns[11];
/// The columns from here on tell of the search, not of the camera.
inline constexpr std::size_t kFirstTimeColumn = 8;

/// "?" where nobody has told it.
std::string CellText(const Column& column, const FoundCamera& found);
/// Null where there is no such column.
const Column* FindColumn(std::string_view name);
/// "mac, ip, …"
std::string ColumnNames();
/// Puts cameras in the order of the column, those with equal values in order of arrival.
void SortBy(const Column& column, std::vector<const FoundCamera*>& cameras);

/// A filter from TEXT, for any column, or COLUMN=TEXT: the cell contains the text, small and capital letters (A to Z)
/// being the same. Throws WrongUse where there is no such column.
FoundCameras::Filter FilterOf(const std::string& text);

}  // namespace tarnfind
