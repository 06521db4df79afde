/// Conversion of a held value to the types that callers ask for.
///
/// Numbers convert as in the language, wider integers to narrower ones by their low bits; every floating number is
/// first truncated to a signed integer, and one out of its range gives what the processor's instruction gives: the
/// lowest number. Anything else goes through its text and the target's parser, so "42" as a number is 42 and a guid
/// mostly 0.
#pragma once

#include "valuelist/variant_types.h"

namespace Kestrel {

/// Target: unsigned char, bool, std::uint32_t, std::uint64_t or std::u16string. Errors: variant_text.h.
template <class Target>
Target ConvertHeld(std::size_t tag, const void* held);

}  // namespace Kestrel
