#include "platform/type_name.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace platform {

std::string UndecoratedTypeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                         std::free);
  return name ? name.get() : type.name();
}

}  // namespace platform
