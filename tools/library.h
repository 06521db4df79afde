/// Finding and loading the finder library; nothing of it is linked.
#pragma once

#include <string>

#include "tarn/camera_finding.h"

namespace tarnfind {

struct Library {
  decltype(&GetFindingInterface) create = nullptr;
  std::string file;          ///< of the finder library
  std::string platformFile;  ///< of the platform library that the finder library has brought along
};

/// Loads the library from `file`, or where that is empty from beside this program, from the library folder of the same
/// installation, or from where the system looks. Throws NoChannel, which names the file that is missing or wrong.
/// The library is never unloaded, because a thread of the platform library may be on its way out of it at any time.
Library LoadFinderLibrary(const std::string& file);

}  // namespace tarnfind
