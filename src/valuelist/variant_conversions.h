/// Conversion of a held value to the types that callers ask for.
///
///     from \ to        string, u16string     bool              unsigned char, 32 and 64 bits unsigned
///     integer          its text              not 0             low bits, sign-extended before
///     float, double    its text              not 0; NaN: true  truncated, see below
///     string           itself; from UTF-8    parsed            parsed
///     u16string        its text; itself      its text, parsed  its text, parsed
///     any other        its text              its text, parsed  its text, parsed
///
/// So the text "42" gives the number 42, and a guid gives 0 unless its text begins with decimal digits.
///
/// A floating number is truncated toward zero to a signed integer (of 32 bits for unsigned char, else of 64 bits), and
/// the low bits of that count. A number that the integer cannot hold gives the lowest integer, because that is what the
/// processor's instruction gives on x64. For 64 bits, numbers from 2^63 to 2^64 are converted exactly.
///
/// Errors  Those of the text forms (variant_text.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

#include "valuelist/variant_held_types.h"

namespace Kestrel {

/// The one list of targets.
using VariantTargets = std::tuple<unsigned char, bool, std::uint32_t, std::uint64_t, std::string, std::u16string>;

template <class T>
concept VariantTarget = kPositionIn<T, VariantTargets> < std::tuple_size_v<VariantTargets>;

/// Row number = tag of the source.
template <class Target>
using VariantConversionTable = std::array<Target (*)(const void* held), kVariantTypeCount>;

template <class Targets>
struct VariantConversionTablesOf;
template <class... Targets>
struct VariantConversionTablesOf<std::tuple<Targets...>> {
  using Type = std::tuple<VariantConversionTable<Targets>...>;
};
extern const VariantConversionTablesOf<VariantTargets>::Type kVariantConversions;

}  // namespace Kestrel
