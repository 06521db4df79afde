#include "valuelist/variant_traits.h"

#include <array>
#include <memory>
#include <new>
#include <utility>

#include "base/exceptions.h"
#include "valuelist/variant_text.h"
#include "valuelist/variant_wire.h"

namespace Kestrel {
namespace {

/// Whether ToString replaces any exception by VariantStringConversionException: all types but those of text, bytes and
/// objects.
constexpr bool TextHidesCause(std::size_t tag) {
  return tag < vtString || (tag > vtBlobPtr && tag != vtReferencePointer);
}

template <std::size_t kTag>
struct Operations {
  using Held = VariantHeldType<kTag>;
  static constexpr const VariantTypeRow& kRow = kVariantTypes[kTag];
  static_assert(sizeof(Held) <= kLargestHeldSize && alignof(Held) <= kHeldAlignment);
  static_assert(kRow.fixedSize == kVariableSize || kRow.fixedSize == sizeof(Held));

  static Held& Value(void* held) { return *std::launder(static_cast<Held*>(held)); }
  static const Held& Value(const void* held) { return *std::launder(static_cast<const Held*>(held)); }

  static void Destroy(void* held) { std::destroy_at(&Value(held)); }
  static std::string ToString(const void* held) {
    if constexpr (!TextHidesCause(kTag)) return Kestrel::ToString(Value(held));
    try {
      return Kestrel::ToString(Value(held));
    } catch (...) {
      throw VariantExceptions::VariantStringConversionException();
    }
  }
  static void FromString(void* held, std::string_view text) { Kestrel::FromString(Value(held), text); }
  static std::uint64_t GetSize(const void* held) { return Kestrel::GetSize(Value(held)); }
  static void WriteRaw(const void* held, std::uint8_t* payload) { Kestrel::WriteRaw(Value(held), payload); }
  static void ReadRaw(void* held, const std::uint8_t* payload, std::uint64_t n) {
    Kestrel::ReadRaw(Value(held), payload, n);
  }
  static void ReadFromStream(void* held, RawReader& stream) { Kestrel::ReadFromStream(Value(held), stream); }
  static void WriteToStream(const void* held, IKestrelStream& stream) { Kestrel::WriteToStream(Value(held), stream); }
  static void CopyConstruct(const void* held, void* fresh) { ::new (fresh) Held(Value(held)); }

  static void Construct(void* fresh) { ::new (fresh) Held(); }
  static void MoveConstruct(void* held, void* fresh) noexcept { ::new (fresh) Held(std::move(Value(held))); }
  static_assert(std::is_nothrow_move_constructible_v<Held>);
};

template <std::size_t kTag>
constexpr VariantTypeTraits Row() {
  using Type = Operations<kTag>;
  return {.typeInfo = &typeid(typename Type::Held),
          .Destroy = Type::Destroy,
          .type = Type::kRow.writtenTag,
          .ToString = Type::ToString,
          .FromString = Type::FromString,
          .GetSize = Type::GetSize,
          .fixedSize = Type::kRow.fixedSize,
          .WriteRaw = Type::WriteRaw,
          .ReadRaw = Type::ReadRaw,
          .ReadFromStream = Type::ReadFromStream,
          .WriteToStream = Type::WriteToStream,
          .CopyConstruct = Type::CopyConstruct,
          .Construct = Type::Construct,
          .MoveConstruct = Type::MoveConstruct,
          .bytesAreValue = std::is_trivially_copyable_v<typename Type::Held>};
}

}  // namespace

constexpr VariantTypeTraits kVariantTraits[kVariantTypeCount] = {
    Row<vtBool>(),     Row<vtChar>(),       Row<vtUChar>(),
    Row<vtSChar>(),    Row<vtShort>(),      Row<vtUShort>(),
    Row<vtUInt>(),     Row<vtInt>(),        Row<vtInt64>(),
    Row<vtFloat>(),    Row<vtDouble>(),     Row<vtString>(),
    Row<vtWString>(),  Row<vtBinaryData>(), Row<vtBlobPtr>(),
    Row<vtFileTime>(), Row<vtDateTime>(),   Row<vtReferencePointer>(),
    Row<vtGuid>(),     Row<vtLong>(),       Row<vtUInt64>(),
};
static_assert(kVariantTraits[kVariantTypeCount - 1].fixedSize == sizeof(std::uint64_t), "a type has no row");

}  // namespace Kestrel
