/// The name of a module's file.
#pragma once

#include <string>

#include "platform/modules.h"

namespace Kestrel {

/// The file name without its directory; a null module is the executable. Throws SystemException with the context
/// "GetModuleFileNameW" where the system knows no path, or one of 1024 units or more.
std::u16string ModuleFileName(platform::ModuleHandle module);

}  // namespace Kestrel
