/// The name of a module's file.
#pragma once

#include <string>

#include "platform/modules.h"

namespace Kestrel {

/// Without its directory; null names the executable. Throws SystemException with the context "GetModuleFileNameW" where
/// the system has no path, or one of 1024 units or more.
std::u16string ModuleFileName(platform::ModuleHandle module);

}  // namespace Kestrel
