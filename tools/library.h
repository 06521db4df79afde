/// Finding and loading the finder library; nothing of it is linked.
#pragma once

#include <string>

#include "tarn/camera_finding.h"

namespace tarnfind {

using CreateFinderFunction = decltype(&GetFindingInterface);

/// Loads the library from `file`, or where that is empty from beside this program, from the library folder of the same
/// installation, or from where the system looks. Throws WrongUse with the system's reason and what to do.
/// The library is never unloaded: a thread of the platform library may be on its way out of it at any time.
CreateFinderFunction LoadFinderLibrary(const std::string& file);

}  // namespace tarnfind
