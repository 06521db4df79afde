/// How far a part of base64's decoding came.
#pragma once

#include <cstddef>

namespace Kestrel {

struct Base64Progress {
  std::size_t characters;  ///< read
  std::size_t bytes;       ///< written
};

}  // namespace Kestrel
