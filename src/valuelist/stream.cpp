#include "valuelist/stream.h"

#include <cstring>

namespace Kestrel {

void RawReader::Write(const void*, std::uint64_t) {
  throw IKestrelStreamException("RawReader - write not allowed");
}

void RawReader::Read(void* destination, std::uint64_t n) {
  const std::uint8_t* const taken = Take(n);
  if (n > 0) std::memcpy(destination, taken, static_cast<std::size_t>(n));
}

const std::uint8_t* RawReader::Take(std::uint64_t n) {
  if (n > size_ - position_) throw IKestrelStreamException(kReadFailed);
  const std::uint8_t* const taken = bytes_ + position_;
  position_ += n;
  return taken;
}

}  // namespace Kestrel
