/// Kestrel::Variant: one value of one of 21 types.
///
/// The value lies inline and the variant points at the traits of its type; everything is dispatched through that table
/// (variant_traits.h). Copying is deep for binary data; a blob that was read from a buffer points into that buffer,
/// until OwnBytes copies what it points at.
///
/// Threads  No lock inside. The counts of shared blobs and of referenced objects are atomic, so copies of one value may
///          live on different threads.
/// Errors   VariantInvalidTypeException, VariantStringConversionException, VariantStringToValueConversionException,
///          StringConversionException, GuidConversionException, EKestrelDateTime, SystemException; BufferException for
///          payloads that cannot be a value. A failed FromString leaves the type unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "valuelist/variant_conversions.h"
#include "valuelist/variant_traits.h"

namespace Kestrel {

class Variant {
 public:
  /// Holds the value as the type it has, which decides the tag: char gives vtChar, std::int32_t vtInt, and so on. What
  /// converts to std::string_view is copied into a vtString.
  template <VariantSource Source>
  explicit Variant(Source&& value) : traits_(&kVariantTraits[kVariantTag<VariantHolding<Source>>]) {
    ::new (static_cast<void*>(storage_)) VariantHolding<Source>(std::forward<Source>(value));
  }

  /// The default value of a tag; throws VariantInvalidTypeException for 21 and more.
  static Variant Create(std::uint8_t tag);

  Variant(const Variant& other) : traits_(other.traits_) {
    if (traits_->bytesAreValue) {
      std::memcpy(storage_, other.storage_, kStorageSize);
    } else {
      traits_->CopyConstruct(other.storage_, storage_);
    }
  }
  /// The other keeps its type; its value is unspecified.
  Variant(Variant&& other) noexcept : traits_(other.traits_) { MoveFrom(other); }
  Variant& operator=(const Variant& other) { return *this = Variant(other); }
  Variant& operator=(Variant&& other) noexcept {
    if (this == &other) return *this;
    Destroy();
    traits_ = other.traits_;
    MoveFrom(other);
    return *this;
  }
  ~Variant() { Destroy(); }

  std::uint8_t GetType() const { return traits_->type; }  ///< the tag that is written
  const std::type_info& GetTypeInfo() const { return *traits_->typeInfo; }
  std::uint64_t GetSize() const { return traits_->GetSize(storage_); }  ///< payload bytes
  std::uint64_t GetFixedSize() const { return traits_->fixedSize; }     ///< payload bytes, or kVariableSize
  void WriteRaw(std::uint8_t* payload) const { traits_->WriteRaw(storage_, payload); }
  /// Builds the value from n payload bytes.
  void ReadRaw(const std::uint8_t* payload, std::uint64_t n) { traits_->ReadRaw(storage_, payload, n); }
  void ReadFromStream(RawReader& stream) { traits_->ReadFromStream(storage_, stream); }
  void WriteToStream(IKestrelStream& stream) const { traits_->WriteToStream(storage_, stream); }
  /// Makes the value independent of the buffer that it was read from: a blob gets a block of its own.
  void OwnBytes();

  std::string ToString() const { return traits_->ToString(storage_); }
  /// Replaces the value; the type stays.
  void FromString(std::string_view text) { traits_->FromString(storage_, text); }

  /// The value converted by the rules of variant_conversions.h. To a std::string that is ToString.
  template <VariantTarget Target>
  Target To() const {
    const auto tag = static_cast<std::size_t>(traits_ - kVariantTraits);
    return std::get<VariantConversionTable<Target>>(kVariantConversions)[tag](storage_);
  }

  /// The held value where it is a T exactly, else null.
  template <VariantHeld T>
  const T* GetIf() const {
    return traits_ == &kVariantTraits[kVariantTag<T>] ? static_cast<const T*>(static_cast<const void*>(storage_))
                                                      : nullptr;
  }

 private:
  explicit Variant(const VariantTypeTraits& traits);

  void MoveFrom(Variant& other) noexcept {
    if (traits_->bytesAreValue) {
      std::memcpy(storage_, other.storage_, kStorageSize);
    } else {
      traits_->MoveConstruct(other.storage_, storage_);
    }
  }
  void Destroy() noexcept {
    if (!traits_->bytesAreValue) traits_->Destroy(storage_);
  }

  static constexpr std::size_t kStorageSize = kLargestHeldSize;
  alignas(kHeldAlignment) std::byte storage_[kStorageSize];
  const VariantTypeTraits* traits_;
};

}  // namespace Kestrel
