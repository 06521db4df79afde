/// A process-wide, reference-counted object that is made on first use and let go when the module is unloaded.
///
/// Threads: Any. The pointer is only followed under a lock that is never destroyed, so a thread that comes late either
/// gets a reference on the old object or makes a new one.
#pragma once

#include <mutex>
#include <utility>

#include "base/reference_counting.h"
#include "base/static_lock.h"

namespace Kestrel {

template <class T>
class GlobalObject {
 public:
  /// Throws what making a T throws. Two threads that come first at once may both make one; one of the two is kept. It
  /// is made without the lock, because making it may call out of the library.
  ReferencePointer<T> Get() {
    if (ReferencePointer<T> existing = Find()) return existing;
    return Keep(ReferencePointer<T>(new T));
  }

  /// Lets the process-wide object go to the caller; null where there is none. The next Get makes a new one.
  ReferencePointer<T> Take() {
    const std::lock_guard guard(StaticLock<GlobalObject>());
    ReferencePointer<T> taken(object_);
    if (object_) std::exchange(object_, nullptr)->Release();
    return taken;
  }

 private:
  ReferencePointer<T> Find() {
    const std::lock_guard guard(StaticLock<GlobalObject>());
    return ReferencePointer<T>(object_);
  }

  ReferencePointer<T> Keep(ReferencePointer<T> made) {
    const std::lock_guard guard(StaticLock<GlobalObject>());
    if (!object_) {
      object_ = made.Get();
      object_->AddRef();
    }
    return ReferencePointer<T>(object_);
  }

  T* object_ = nullptr;  ///< holds one reference
};

}  // namespace Kestrel
