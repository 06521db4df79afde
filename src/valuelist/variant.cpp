#include "valuelist/variant.h"

#include <new>

#include "base/exceptions.h"
#include "valuelist/variant_conversions.h"

namespace Kestrel {
namespace {

std::size_t TagOf(const VariantTypeTraits* traits) {
  return static_cast<std::size_t>(traits - kVariantTraits);
}

}  // namespace

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
