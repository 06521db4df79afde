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

/// Types whose text reports every failure in the same way: all but the ones that hold text, bytes or an object.
constexpr bool TextHidesCause(std::size_t tag) {
  return tag < vtString || (tag > vtBlobPtr && tag != vtReferencePointer);
}

template <std::size_t kTag>
struct Operations {
  using Held = VariantHeldType<kTag>;
  static constexpr const VariantTypeRow& kRow = kVariantTypes[kTag];
  static_assert(sizeof(Held) <= kLargestHeldSize && alignof(Held) <= kHeldAlignment);
  static_assert(kRow.payload == kVariableSize || kRow.payload == sizeof(Held));

  static Held& Value(void* held) { return *std::launder(static_cast<Held*>(held)); }
  static const Held& Value(const void* held) { return *std::launder(static_cast<const Held*>(held)); }

  static const std::type_info& GetTypeInfo() { return typeid(Held); }
  static void Destroy(void* held) { std::destroy_at(&Value(held)); }
  static std::uint8_t GetType() { return kRow.writtenTag; }
  static std::string ToString(const void* held) {
    if constexpr (!TextHidesCause(kTag)) return TextOf(Value(held));
    try {
      return TextOf(Value(held));
    } catch (...) {
      throw VariantExceptions::VariantStringConversionException();
    }
  }
  static void FromString(void* held, std::string_view text) { ParseText(text, Value(held)); }
  static std::uint64_t GetSize(const void* held) { return PayloadSize(Value(held)); }
  static std::uint64_t GetFixedSize() { return kRow.payload; }
  static void WriteRaw(const void* held, std::uint8_t* payload) { WritePayload(Value(held), payload); }
  static void ReadRaw(void* held, const std::uint8_t* payload, std::uint64_t n) {
    ReadPayload(Value(held), payload, n);
  }
  static void ReadFromStream(void* held, IKestrelStream& stream) { Kestrel::ReadFromStream(Value(held), stream); }
  static void WriteToStream(const void* held, IKestrelStream& stream) { Kestrel::WriteToStream(Value(held), stream); }
  static void CopyConstruct(const void* held, void* fresh) { ::new (fresh) Held(Value(held)); }

  static void Construct(void* fresh) { ::new (fresh) Held(); }
  static void MoveConstruct(void* held, void* fresh) noexcept { ::new (fresh) Held(std::move(Value(held))); }
  static_assert(std::is_nothrow_move_constructible_v<Held>);
};

template <std::size_t kTag>
constexpr VariantTypeTraits Row() {
  using Type = Operations<kTag>;
  return {Type::GetTypeInfo,    Type::Destroy,       Type::GetType,
          Type::ToString,       Type::FromString,    Type::GetSize,
          Type::GetFixedSize,   Type::WriteRaw,      Type::ReadRaw,
          Type::ReadFromStream, Type::WriteToStream, Type::CopyConstruct,
          Type::Construct,      Type::MoveConstruct, std::is_trivially_copyable_v<typename Type::Held>};
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

}  // namespace Kestrel
