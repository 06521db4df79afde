/// What each type of a variant can do: one row of operations a type, built from its held type by one rule.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <typeinfo>

#include "valuelist/stream.h"
#include "valuelist/variant_held_types.h"

namespace Kestrel {

/// A string is the largest held value.
inline constexpr std::size_t kLargestHeldSize = sizeof(std::string);
inline constexpr std::size_t kHeldAlignment = alignof(std::uint64_t);

/// `held` is the address of the value. Errors: variant_text.h and variant_wire.h.
struct VariantTypeTraits {
  const std::type_info& (*GetTypeInfo)();
  void (*Destroy)(void* held);
  std::uint8_t (*GetType)();  ///< the tag that is written
  /// A number, date or guid that cannot be shown throws VariantStringConversionException, whatever the cause.
  std::string (*ToString)(const void* held);
  void (*FromString)(void* held, std::string_view text);
  std::uint64_t (*GetSize)(const void* held);
  std::uint64_t (*GetFixedSize)();  ///< kVariableSize where the size depends on the value
  void (*WriteRaw)(const void* held, std::uint8_t* payload);
  void (*ReadRaw)(void* held, const std::uint8_t* payload, std::uint64_t n);
  void (*ReadFromStream)(void* held, IKestrelStream& stream);
  void (*WriteToStream)(const void* held, IKestrelStream& stream);
  void (*CopyConstruct)(const void* held, void* fresh);

  // Beside the twelve operations, what the variant needs to know to keep a value.
  void (*construct)(void* fresh);  ///< the default value
  void (*moveConstruct)(void* held, void* fresh) noexcept;
  bool bytesAreValue;  ///< copied and moved as bytes, and nothing to destroy
};

/// Row number = tag, which for vtUInt64 is not what its row answers.
extern const VariantTypeTraits kVariantTraits[kVariantTypeCount];

}  // namespace Kestrel
