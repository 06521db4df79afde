#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "valuelist/buffer_pool.h"

namespace fuzz {

void Check(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "property does not hold: %s\n", property);
  std::abort();
}

std::uint8_t Choices::Byte() {
  if (rest_.empty()) return 0;
  const std::uint8_t byte = rest_.front();
  rest_ = rest_.subspan(1);
  return byte;
}

Bytes Choices::Take(std::size_t count) {
  const Bytes taken = rest_.first(std::min(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return taken;
}

Kestrel::ReferencePointer<Kestrel::Buffer> BufferOf(Bytes bytes) {
  return Kestrel::CreateBuffer(bytes.data(), bytes.size());
}

}  // namespace fuzz
