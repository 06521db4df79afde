#include "valuelist/variant.h"

#include <new>
#include <utility>

#include "base/exceptions.h"
#include "valuelist/variant_conversions.h"

namespace Kestrel {
namespace {

std::size_t TagOf(const VariantTypeTraits* traits) {
  return static_cast<std::size_t>(traits - kVariantTraits);
}

}  // namespace

template <class T>
void Variant::Hold(T value) {
  ::new (static_cast<void*>(storage_)) T(std::move(value));
  traits_ = &kVariantTraits[kTagOf<T>];
}

Variant::Variant(BoolTag, bool value) {
  Hold(value);
}
Variant::Variant(char value) {
  Hold(value);
}
Variant::Variant(unsigned char value) {
  Hold(value);
}
Variant::Variant(signed char value) {
  Hold(value);
}
Variant::Variant(std::int16_t value) {
  Hold(value);
}
Variant::Variant(std::uint16_t value) {
  Hold(value);
}
Variant::Variant(std::uint32_t value) {
  Hold(value);
}
Variant::Variant(std::int32_t value) {
  Hold(value);
}
Variant::Variant(VariantLong value) {
  Hold(value);
}
Variant::Variant(std::int64_t value) {
  Hold(value);
}
Variant::Variant(std::uint64_t value) {
  Hold(value);
}
Variant::Variant(float value) {
  Hold(value);
}
Variant::Variant(double value) {
  Hold(value);
}
Variant::Variant(std::string value) {
  Hold(std::move(value));
}
Variant::Variant(std::string_view value) {
  Hold(std::string(value));
}
Variant::Variant(std::u16string value) {
  Hold(std::move(value));
}
Variant::Variant(BinaryData value) {
  Hold(std::move(value));
}
Variant::Variant(BlobPtr value) {
  Hold(std::move(value));
}
Variant::Variant(platform::FileTime value) {
  Hold(value);
}
Variant::Variant(TKestrelDateTime value) {
  Hold(value);
}
Variant::Variant(VariantReferencePointer value) {
  Hold(std::move(value));
}
Variant::Variant(const Guid& value) {
  Hold(value);
}

Variant::Variant(const VariantTypeTraits& traits) : traits_(&traits) {
  traits.construct(storage_);
}

Variant Variant::Create(std::uint8_t tag) {
  if (tag >= kVariantTypeCount) throw VariantExceptions::VariantInvalidTypeException();
  return Variant(kVariantTraits[tag]);
}

void Variant::OwnBytes() {
  if (GetIf<BlobPtr>()) std::launder(reinterpret_cast<BlobPtr*>(storage_))->OwnBytes();
}

template <>
unsigned char Variant::To<unsigned char>() const {
  return ConvertHeld<unsigned char>(TagOf(traits_), storage_);
}
template <>
bool Variant::To<bool>() const {
  return ConvertHeld<bool>(TagOf(traits_), storage_);
}
template <>
std::uint32_t Variant::To<std::uint32_t>() const {
  return ConvertHeld<std::uint32_t>(TagOf(traits_), storage_);
}
template <>
std::uint64_t Variant::To<std::uint64_t>() const {
  return ConvertHeld<std::uint64_t>(TagOf(traits_), storage_);
}
template <>
std::u16string Variant::To<std::u16string>() const {
  return ConvertHeld<std::u16string>(TagOf(traits_), storage_);
}
template <>
std::string Variant::To<std::string>() const {
  return ToString();
}

}  // namespace Kestrel
