/// Holds one reference on an interface, or null.
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

  /// What Release throws is discarded: it comes from an object of somebody else, and references go in destructors.
  void Reset() noexcept {
    if (Interface* const old = std::exchange(object_, nullptr)) SwallowExceptions([old] { old->Release(); });
  }
  /// Gives the reference to the caller.
  Interface* Detach() { return std::exchange(object_, nullptr); }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface* object_ = nullptr;
};

}  // namespace Kestrel
