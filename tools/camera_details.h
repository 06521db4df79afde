/// Everything that a camera tells, for a reader.
#pragma once

#include <cstdint>
#include <string>

#include "tools/camera_snapshot.h"

namespace tarnfind {

/// One line for each property, ready for a terminal. type: shown in place of the snapshot's own.
std::string CameraDetails(const CameraSnapshot& camera, std::int32_t type, bool showPasswords);

}  // namespace tarnfind
