/// A difference between two sets of cameras, as it is printed.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/capture/camera_set.h"

namespace tarnfind {

/// A line, and one more for each field that differs; with json one object. before, after: where the camera is looked
/// up.
std::string DifferenceText(const CameraDifference& difference, const CameraSet& before, const CameraSet& after,
                           bool json);

/// "2 cameras differ"
std::string DifferenceCount(std::size_t count);

/// The object at the end of a comparison.
nlohmann::ordered_json ComparisonSummary(const char* command, const CameraSet& before, const CameraSet& after,
                                         std::size_t differences);

}  // namespace tarnfind
