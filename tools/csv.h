/// Cameras as comma-separated values: one line of names, one line for each camera (RFC 4180, but lines end with "\n").
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/found_cameras.h"

namespace tarnfind {

std::string CsvHeader();
/// What nobody has told stays empty.
std::string CsvRow(const FoundCamera& found, const FoundCameras& cameras);

/// The fields of one line, without quotes. Throws WrongUse for quotes that do not end.
std::vector<std::string> ParseCsvLine(std::string_view line);

}  // namespace tarnfind
