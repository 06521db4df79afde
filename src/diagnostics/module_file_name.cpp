#include "diagnostics/module_file_name.h"

#include <cstdint>
#include <iterator>

#include "base/exceptions.h"

namespace Kestrel {

std::u16string ModuleFileName(platform::ModuleHandle module) {
  char16_t path[1024];
  const std::uint32_t length = platform::GetModuleFileNameW(module, path, std::size(path));
  if (length == 0 || length >= std::size(path)) ThrowLastSystemError("GetModuleFileNameW");
  return platform::PathFindFileNameW(path);
}

}  // namespace Kestrel
