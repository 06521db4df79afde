/// The one list of the types that a variant holds, and the tag of each.
///
/// A new type is a tag and a row of kVariantTypes, its place in this list, a row of kVariantTraits and an overload of
/// each operation (variant_text.h, variant_wire.h). The compiler names what is missing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "base/guid.h"
#include "platform/clock.h"
#include "time/date_time.h"
#include "valuelist/variant_payloads.h"
#include "valuelist/variant_types.h"

namespace Kestrel {

/// Position = tag. No type stands twice, so that the type of a value decides its tag.
using VariantHeldTypes =
    std::tuple<bool, char, unsigned char, signed char, std::int16_t, std::uint16_t, std::uint32_t, std::int32_t,
               std::int64_t, float, double, std::string, std::u16string, BinaryData, BlobPtr, platform::FileTime,
               TKestrelDateTime, VariantReferencePointer, Guid, VariantLong, std::uint64_t>;
static_assert(std::tuple_size_v<VariantHeldTypes> == kVariantTypeCount);

template <std::size_t kTag>
using VariantHeldType = std::tuple_element_t<kTag, VariantHeldTypes>;

/// The position of T in a tuple type; its size where T does not stand there.
template <class T, class Tuple>
inline constexpr std::size_t kPositionIn = std::tuple_size_v<Tuple>;
template <class T, class... Others>
inline constexpr std::size_t kPositionIn<T, std::tuple<T, Others...>> = 0;
template <class T, class First, class... Others>
inline constexpr std::size_t kPositionIn<T, std::tuple<First, Others...>> = 1 + kPositionIn<T, std::tuple<Others...>>;

/// A type that a variant holds as it is.
template <class T>
concept VariantHeld = kPositionIn<T, VariantHeldTypes> < kVariantTypeCount;

template <VariantHeld T>
inline constexpr std::size_t kVariantTag = kPositionIn<T, VariantHeldTypes>;

/// The type that a variant holds when it is made from a Source: the same type, or std::string for any other narrow
/// text.
template <class Source>
using VariantHolding =
    std::conditional_t<!VariantHeld<std::remove_cvref_t<Source>> && std::is_convertible_v<Source, std::string_view>,
                       std::string, std::remove_cvref_t<Source>>;
template <class Source>
concept VariantSource = VariantHeld<VariantHolding<Source>>;

}  // namespace Kestrel
