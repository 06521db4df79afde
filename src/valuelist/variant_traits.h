/// What each type of a variant can do: one row of operations a type, built from its held type by one rule.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeinfo>

#include "base/guid.h"
#include "platform/clock.h"
#include "time/date_time.h"
#include "valuelist/stream.h"
#include "valuelist/variant_payloads.h"
#include "valuelist/variant_types.h"

namespace Kestrel {

/// Held types. Position = tag; no type stands twice.
using VariantHeldTypes =
    std::tuple<bool, char, unsigned char, signed char, std::int16_t, std::uint16_t, std::uint32_t, std::int32_t,
               std::int64_t, float, double, std::string, std::u16string, BinaryData, BlobPtr, platform::FileTime,
               TKestrelDateTime, VariantReferencePointer, Guid, VariantLong, std::uint64_t>;
static_assert(std::tuple_size_v<VariantHeldTypes> == kVariantTypeCount);

template <std::size_t kTag>
using VariantHeldType = std::tuple_element_t<kTag, VariantHeldTypes>;

/// How many types of the list stand before T.
template <class T, class... Types>
constexpr std::size_t PositionOf(std::type_identity<std::tuple<Types...>>) {
  std::size_t position = 0;
  static_cast<void>(((std::is_same_v<T, Types> ? false : (++position, true)) && ...));
  return position;
}
template <class T>
inline constexpr std::size_t kTagOf = [] {
  constexpr std::size_t kPosition = PositionOf<T>(std::type_identity<VariantHeldTypes>());
  static_assert(kPosition < kVariantTypeCount, "a variant holds no such type");
  return kPosition;
}();

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
