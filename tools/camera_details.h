/// Everything that a camera tells, for a reader.
#pragma once

#include <string>

#include "tools/found_cameras.h"

namespace tarnfind {

/// One line for each property, ready for a terminal; "?" where nobody has told it.
std::string CameraDetails(const FoundCamera& found, bool showPasswords);

}  // namespace tarnfind
