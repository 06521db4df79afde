/// Static locks and other static objects for code that may run until the process is gone.
///
/// An ordinary static object is destroyed at the end of the process, while other threads may still use it. An object of
/// this file is made on first use and never destroyed. When the library is unloaded its storage goes with the library,
/// so by then it must own nothing that would have to be freed.
#pragma once

#include <cstddef>
#include <new>

#include "base/critical_section.h"

namespace Kestrel {

/// The one T of an Owner.
template <class T, class Owner = T>
T& NeverDestroyed() {
  alignas(T) static std::byte storage[sizeof(T)];
  static T& object = *new (storage) T;
  return object;
}

/// The lock of an Owner, which is the type that it guards.
template <class Owner>
CriticalSection& StaticLock() {
  return NeverDestroyed<CriticalSection, Owner>();
}

}  // namespace Kestrel
