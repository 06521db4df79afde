#include "valuelist/stream.h"

#include <cstring>

namespace Kestrel {

void RawReader::Write(const void*, std::uint64_t) {
  throw IKestrelStreamException("RawReader - write not allowed");
}

void RawReader::Read(void* destination, std::uint64_t n) {
  if (n > GetRemaining()) throw IKestrelStreamException(kReadFailed);
  if (n > 0) std::memcpy(destination, bytes_ + position_, static_cast<std::size_t>(n));
  position_ += n;
}

}  // namespace Kestrel
