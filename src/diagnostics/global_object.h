/// A process-wide, reference-counted object that is made on first use and let go when the module is unloaded.
///
/// Two threads that come first at once may both make one; one of the two is kept. A lock in its place would have to be
/// a static object, whose own end comes before that of the module's, which still lets go of this.
#pragma once

#include <atomic>

#include "base/reference_counting.h"

namespace Kestrel {

template <class T>
class GlobalObject {
 public:
  /// Throws what making a T throws.
  ReferencePointer<T> Get() {
    if (T* const object = object_.load(std::memory_order_acquire)) return ReferencePointer<T>(object);
    ReferencePointer<T> created(new T);
    T* kept = nullptr;
    created->AddRef();
    if (object_.compare_exchange_strong(kept, created.Get(), std::memory_order_acq_rel)) return created;
    created->Release();
    return ReferencePointer<T>(kept);
  }

  /// Null where there is none. No other thread may be using this. The next Get makes a new object.
  ReferencePointer<T> Take() {
    ReferencePointer<T> taken(object_.exchange(nullptr, std::memory_order_acq_rel));
    if (taken) taken->Release();
    return taken;
  }

 private:
  std::atomic<T*> object_{nullptr};  ///< holds one reference
};

}  // namespace Kestrel
