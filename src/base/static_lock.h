/// A lock for what lives at namespace scope.
///
/// An ordinary static lock is destroyed at the end of the process, while other threads may still take it. This one is
/// made on first use and never destroyed; it owns nothing that would have to be freed.
#pragma once

#include <cstddef>
#include <new>

#include "base/critical_section.h"

namespace Kestrel {

/// One lock per Owner, which is the type that is guarded.
template <class Owner>
CriticalSection& StaticLock() {
  alignas(CriticalSection) static std::byte storage[sizeof(CriticalSection)];
  static CriticalSection& lock = *new (storage) CriticalSection;
  return lock;
}

}  // namespace Kestrel
