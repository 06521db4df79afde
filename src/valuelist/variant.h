/// Kestrel::Variant: one value of one of 21 types.
///
/// The value lies inside the variant, which points at the row of its type (variant_traits.h); every operation goes
/// through that row. The files beside this one hold one subject each: the types and their tags (variant_types.h,
/// variant_held_types.h), texts (variant_text.h), payloads and streams (variant_wire.h), conversions
/// (variant_conversions.h), the types that own bytes or an object (variant_payloads.h).
///
/// Ownership  A copy of binary data has its own bytes. A blob that was read from a buffer points into that buffer until
///            OwnBytes is called; its copies too.
/// Threads    No lock inside. The counts of shared blobs and of referenced objects are atomic, so copies of one value
///            may be used on different threads.
/// Errors     Those of the files above. An operation that throws leaves type and value as they were.
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
#include "valuelist/wire_text.h"

namespace Kestrel {

class Variant {
 public:
  /// Holds the value as the type it has, which decides the tag: char gives vtChar, std::int32_t vtInt, and so on. What
  /// converts to std::string_view is copied into a vtString.
  template <VariantSource Source>
  explicit Variant(Source&& value) : traits_(&kVariantTraits[kVariantTag<VariantHolding<Source>>]) {
    ::new (static_cast<void*>(storage_)) VariantHolding<Source>(std::forward<Source>(value));
  }

  explicit Variant(const WireText& text) : traits_(&kVariantTraits[vtString]) {
    ::new (static_cast<void*>(storage_)) std::string(text.MakeString());
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
  /// The other variant keeps its type; its value is unspecified.
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
  /// Writes GetSize bytes.
  void WriteRaw(std::uint8_t* payload) const { traits_->WriteRaw(storage_, payload); }
  /// Replaces the value by the one that n payload bytes stand for; the type stays.
  void ReadRaw(const std::uint8_t* payload, std::uint64_t n) { traits_->ReadRaw(storage_, payload, n); }
  void ReadFromStream(RawReader& stream) { traits_->ReadFromStream(storage_, stream); }
  void WriteToStream(IKestrelStream& stream) const { traits_->WriteToStream(storage_, stream); }
  /// Gives a blob a copy of its bytes, so that the buffer it was read from may go. Other types own their bytes always.
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

  /// As To, into a target that stays as it is where the conversion throws. A value of the target's own type is copied
  /// without a temporary.
  template <VariantTarget Target>
  void AssignTo(Target& target) const {
    if (const Target* const held = GetIf<Target>())
      target = *held;
    else
      target = To<Target>();
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
