/// The object model of everything that crosses the library's boundary: a plain class T that implements an interface I,
/// completed by reference counting, an aggregated free-threaded marshaler and QueryInterface.
///
/// An object starts with a count of 0; MakeComObject takes the creator's reference. The last Release destroys it on the
/// calling thread. QueryInterface answers IUnknown and I, and forwards IMarshal to the marshaler.
///
/// Threads  The three operations of IUnknown may be called on any thread; the others as T says.
/// Errors   QueryInterface returns E_POINTER for a null object, E_NOINTERFACE for any other identifier.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

#include "com/com_ptr.h"
#include "platform/com.h"
#include "tarn/com_types.h"

namespace Kestrel {

/// IID_IMarshal of Windows: {00000003-0000-0000-C000-000000000046}
inline constexpr IID kIidMarshal = {3, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// The identifier of an interface; specialised beside each wrapped class.
template <class I>
inline constexpr IID kInterfaceId = {};

template <class T, class I>
class ComWrapperBase : public T {
 public:
  template <class... Arguments>
  explicit ComWrapperBase(Arguments&&... arguments) : T(std::forward<Arguments>(arguments)...) {}
  virtual ~ComWrapperBase() {
    if (IUnknown* const marshaler = std::exchange(marshaler_, nullptr)) marshaler->Release();
  }
  ComWrapperBase(const ComWrapperBase&) = delete;
  ComWrapperBase& operator=(const ComWrapperBase&) = delete;

  std::uint32_t AddRef() override { return refCount_.fetch_add(1) + 1; }
  std::uint32_t Release() override {
    const std::uint32_t left = refCount_.fetch_sub(1) - 1;
    if (left == 0) delete this;
    return left;
  }

  /// For MakeComObject, before another thread knows the object. Where it fails, the object works without marshaling.
  void CreateMarshaler() {
    void* marshaler = nullptr;
    platform::CoCreateFreeThreadedMarshaler(static_cast<I*>(this), &marshaler);
    marshaler_ = static_cast<IUnknown*>(marshaler);
  }

 protected:
  IUnknown* marshaler_ = nullptr;

 private:
  std::atomic<std::uint32_t> refCount_{0};
};

template <class T, class I>
class ComWrapper final : public ComWrapperBase<T, I> {
 public:
  using ComWrapperBase<T, I>::ComWrapperBase;

  HRESULT QueryInterface(const IID& id, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (id == IID_IUnknown || id == kInterfaceId<I>) {
      I* const primary = this;
      *object = primary;
      primary->AddRef();
      return S_OK;
    }
    if (id == kIidMarshal && this->marshaler_) {
      // S_OK whatever the marshaler answers; the null object tells the caller that it refused.
      this->marshaler_->QueryInterface(id, object);
      return S_OK;
    }
    return E_NOINTERFACE;
  }
};

/// A new wrapped object with the creator's reference. Throws what T's constructor throws.
template <class T, class I, class... Arguments>
ComPtr<ComWrapper<T, I>> MakeComObject(Arguments&&... arguments) {
  auto* const object = new ComWrapper<T, I>(std::forward<Arguments>(arguments)...);
  object->CreateMarshaler();
  return ComPtr<ComWrapper<T, I>>(object);
}

}  // namespace Kestrel
