#include "valuelist/variant_conversions.h"

#include <limits>
#include <type_traits>
#include <utility>

#include "valuelist/variant_text.h"
#include "valuelist/variant_traits.h"

namespace Kestrel {
namespace {

constexpr double kTwoToThe63 = 9223372036854775808.0;

/// Truncates toward zero. NaN and what does not fit give the lowest number of the type.
template <class Signed>
Signed Truncated(double number) {
  using Limits = std::numeric_limits<Signed>;
  constexpr double kEnd = -static_cast<double>(Limits::min());
  return number >= -kEnd && number < kEnd ? static_cast<Signed>(number) : Limits::min();
}

template <class Target>
Target FromFloating(double number) {
  if constexpr (std::is_same_v<Target, bool>) return number != 0;
  if constexpr (std::is_same_v<Target, unsigned char>) return static_cast<Target>(Truncated<std::int32_t>(number));
  // From 2^63 on the signed conversion does not fit, so 2^63 is taken off before and added after.
  if constexpr (std::is_same_v<Target, std::uint64_t>) {
    if (number >= kTwoToThe63 && number < 2 * kTwoToThe63) {
      return static_cast<Target>(Truncated<std::int64_t>(number - kTwoToThe63)) + (Target{1} << 63);
    }
  }
  return static_cast<Target>(Truncated<std::int64_t>(number));
}

template <class Target>
Target Parsed(std::string_view text) {
  Target value{};
  FromString(value, text);
  return value;
}

template <class Target, std::size_t kTag>
Target Convert(const void* held) {
  using Source = VariantHeldType<kTag>;
  constexpr bool kNumber = std::is_arithmetic_v<Source> || std::is_same_v<Source, VariantLong>;
  const Source& value = *static_cast<const Source*>(held);
  if constexpr (std::is_same_v<Source, Target>) {
    return value;
  } else if constexpr (std::is_same_v<Source, std::string>) {
    return Parsed<Target>(value);
  } else if constexpr (std::is_same_v<Target, std::string>) {
    return kVariantTraits[kTag].ToString(held);
  } else if constexpr (!kNumber || !std::is_arithmetic_v<Target>) {
    return Parsed<Target>(kVariantTraits[kTag].ToString(held));
  } else if constexpr (std::is_floating_point_v<Source>) {
    return FromFloating<Target>(value);
  } else {
    return static_cast<Target>(value);
  }
}

template <class Target, std::size_t... kTags>
constexpr VariantConversionTable<Target> TableFor(std::index_sequence<kTags...>) {
  return {&Convert<Target, kTags>...};
}
template <class... Targets>
constexpr auto TablesFor(std::type_identity<std::tuple<Targets...>>) {
  return std::tuple(TableFor<Targets>(std::make_index_sequence<kVariantTypeCount>())...);
}

}  // namespace

constexpr VariantConversionTablesOf<VariantTargets>::Type kVariantConversions =
    TablesFor(std::type_identity<VariantTargets>());

}  // namespace Kestrel
