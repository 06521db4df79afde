#include "valuelist/variant.h"

#include "base/exceptions.h"

namespace Kestrel {
Variant::Variant(const VariantTypeTraits& traits) : traits_(&traits) {
  traits.Construct(storage_);
}

Variant Variant::Create(std::uint8_t tag) {
  if (tag >= kVariantTypeCount) throw VariantExceptions::VariantInvalidTypeException();
  return Variant(kVariantTraits[tag]);
}

void Variant::OwnBytes() {
  if (GetIf<BlobPtr>()) std::launder(reinterpret_cast<BlobPtr*>(storage_))->OwnBytes();
}

}  // namespace Kestrel
