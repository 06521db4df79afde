/// The name of a type, for people. Thread-safe.
#pragma once

#include <string>
#include <typeinfo>

namespace platform {

/// The qualified name of a type as it stands in the source ("Kestrel::BufferException").
std::string UndecoratedTypeName(const std::type_info& type);

}  // namespace platform
