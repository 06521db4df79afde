/// Intrusive reference counting of shared objects inside the library.
///
/// An object is made with a count of 0. Its first ReferencePointer takes the first reference; whoever releases the last
/// reference deletes the object, on the thread of that release.
///
/// Threads: Counts change with atomic operations, so references may be taken and released on any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace Kestrel {

/// A base for classes whose objects are shared rather than copied.
class NonCopyable {
 public:
  NonCopyable() = default;
  NonCopyable(const NonCopyable&) = delete;
  NonCopyable& operator=(const NonCopyable&) = delete;
};

/// The operations of a counted object. Their order is fixed: it is the order of the table of virtual functions.
class VirtualReferenceCountBaseClass : NonCopyable {
 public:
  virtual ~VirtualReferenceCountBaseClass() = default;
  virtual std::uint32_t AddRef() = 0;
  virtual std::uint32_t Release() = 0;
  virtual void DeleteThis() = 0;
  /// Narrow text of the object, for diagnostics.
  virtual std::string ToString() const = 0;

 protected:
  /// Called when the count has reached 0, before DeleteThis.
  virtual void OnFinalRelease() = 0;
};

/// Holds the count and implements the operations on it. The first reference and the last one cost a plain store,
/// because no other thread can change the count then: it would have to hold a reference itself.
template <class Base>
class ReferenceBaseClass : public Base {
 public:
  std::uint32_t AddRef() override {
    if (count_.load(std::memory_order_relaxed) != 0) return count_.fetch_add(1, std::memory_order_relaxed) + 1;
    count_.store(1, std::memory_order_relaxed);
    return 1;
  }
  std::uint32_t Release() override {
    std::uint32_t left = 0;
    if (count_.load(std::memory_order_acquire) != 1) {
      left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    } else {
      count_.store(0, std::memory_order_relaxed);
    }
    if (left == 0) {
      OnFinalRelease();
      this->DeleteThis();
    }
    return left;
  }
  void DeleteThis() override { delete this; }
  std::string ToString() const override { return "<refptr/>"; }

 protected:
  void OnFinalRelease() override {}

 private:
  std::atomic<std::uint32_t> count_{0};
};

using ReferenceCounted = ReferenceBaseClass<VirtualReferenceCountBaseClass>;

/// Holds one reference on a T, or null. Made from a raw pointer it takes a reference of its own.
template <class T>
class ReferencePointer {
 public:
  ReferencePointer() = default;
  ReferencePointer(std::nullptr_t) {}
  explicit ReferencePointer(T* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  ReferencePointer(const ReferencePointer& other) : ReferencePointer(other.object_) {}
  ReferencePointer(ReferencePointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~ReferencePointer() { Reset(); }

  /// The new object is referenced before the old one is released, so that a pointer may be assigned to itself.
  ReferencePointer& operator=(ReferencePointer other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  void Reset() {
    if (T* const old = std::exchange(object_, nullptr)) old->Release();
  }

  T* Get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }
  friend bool operator==(const ReferencePointer& a, const ReferencePointer& b) { return a.object_ == b.object_; }

 private:
  T* object_ = nullptr;
};

}  // namespace Kestrel
