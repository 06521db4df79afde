/// What each type of a variant is and can do: one row a type, built from its held type by one rule.
///
/// Each operation has one name from the variant down: Variant::WriteRaw calls WriteRaw of the row, which calls the
/// overload of WriteRaw for the held type. ToString and FromString are overloaded in variant_text.h, GetSize and the
/// operations on payloads and streams in variant_wire.h; their errors stand there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <typeinfo>

#include "valuelist/stream.h"
#include "valuelist/variant_held_types.h"

namespace Kestrel {

/// Room for any held value; a string is the largest.
inline constexpr std::size_t kLargestHeldSize = sizeof(std::string);
inline constexpr std::size_t kHeldAlignment = alignof(std::uint64_t);

/// The twelve operations in their fixed order. What is the same for every value of a type is a constant, not a
/// function. `held` is the address of the value, `fresh` that of kLargestHeldSize bytes without a value.
struct VariantTypeTraits {
  const std::type_info* typeInfo;
  void (*Destroy)(void* held);
  VariantType type;  ///< the tag that is written
  std::string (*ToString)(const void* held);
  void (*FromString)(void* held, std::string_view text);
  std::uint64_t (*GetSize)(const void* held);
  std::uint64_t fixedSize;  ///< kVariableSize where the size depends on the value
  void (*WriteRaw)(const void* held, std::uint8_t* payload);
  void (*ReadRaw)(void* held, const std::uint8_t* payload, std::uint64_t n);
  void (*ReadFromStream)(void* held, RawReader& stream);
  void (*WriteToStream)(const void* held, IKestrelStream& stream);
  void (*CopyConstruct)(const void* held, void* fresh);

  // What the variant needs besides, to make and move a value.
  void (*Construct)(void* fresh);  ///< the default value
  void (*MoveConstruct)(void* held, void* fresh) noexcept;
  bool bytesAreValue;  ///< copied and moved as bytes, and nothing to destroy
};

/// Row number = tag. The row of vtUInt64 has another written tag, see kVariantTypes.
extern const VariantTypeTraits kVariantTraits[kVariantTypeCount];

}  // namespace Kestrel
