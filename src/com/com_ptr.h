/// Holds one reference on an interface, or null. Made from a raw pointer it takes a reference of its own.
///
/// Threads  One thread at a time uses a ComPtr; several may hold references on one object.
/// Errors   What AddRef throws goes to the caller; nothing else throws.
#pragma once

#include <utility>

#include "com/swallow_exceptions.h"

namespace Kestrel {

template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(Interface* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  /// Takes over a reference that the caller holds.
  static ComPtr Attach(Interface* object) {
    ComPtr result;
    result.object_ = object;
    return result;
  }
  ComPtr(const ComPtr& other) : ComPtr(other.object_) {}
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() { Reset(); }

  /// What Release throws is discarded, because the object may be the wizard's and Reset runs in destructors.
  void Reset() noexcept {
    if (Interface* const old = std::exchange(object_, nullptr)) SwallowExceptions([old] { old->Release(); });
  }
  /// Gives the reference to the caller, who releases it.
  Interface* Detach() { return std::exchange(object_, nullptr); }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface* object_ = nullptr;
};

}  // namespace Kestrel
