#include "diagnostics/registry_value.h"

#include <string>

#include "fuzz_target.h"

namespace {

using Number = std::optional<std::uint32_t>;

Number InSignedRange(std::int64_t value) {
  if (value < -2147483648LL || value > 2147483647LL) return {};
  return static_cast<std::uint32_t>(value);
}

/// The units in front of the first NUL; half a unit at the end is none.
template <class Char>
std::u32string UnitsOf(fuzz::Bytes data) {
  std::u32string units;
  for (std::size_t at = 0; at + sizeof(Char) <= data.size(); at += sizeof(Char)) {
    const char32_t unit = sizeof(Char) == 1 ? data[at] : static_cast<char32_t>(data[at] | data[at + 1] << 8);
    if (unit == 0) break;
    units += unit;
  }
  return units;
}

/// Checks the text of a decimal number before it converts it.
Number ReadDecimal(const std::u32string& text) {
  std::size_t at = 0;
  while (at < text.size() && text[at] <= 32) ++at;
  const bool negative = at < text.size() && text[at] == U'-';
  if (at < text.size() && (text[at] == U'-' || text[at] == U'+')) ++at;
  if (at == text.size() || text.find_first_not_of(U"0123456789", at) != text.npos) return {};
  while (at + 1 < text.size() && text[at] == U'0') ++at;
  const std::string digits(text.begin() + static_cast<std::ptrdiff_t>(at), text.end());
  if (digits.size() > 10) return {};
  return InSignedRange(negative ? -std::stoll(digits) : std::stoll(digits));
}

template <class Char>
Number ReadPlainly(std::uint32_t type, fuzz::Bytes data) {
  std::uint64_t little = 0, big = 0;
  for (std::size_t i = 0; i < data.size() && i < 8; ++i) {
    little |= std::uint64_t{data[i]} << 8 * i;
    big = big << 8 | data[i];
  }
  switch (type) {
    case platform::REG_DWORD:
    case platform::REG_BINARY:
      return data.size() == 4 ? Number(static_cast<std::uint32_t>(little)) : Number();
    case platform::REG_DWORD_BIG_ENDIAN:
      return data.size() == 4 ? Number(static_cast<std::uint32_t>(big)) : Number();
    case platform::REG_QWORD:
      return data.size() == 8 ? InSignedRange(static_cast<std::int64_t>(little)) : Number();
    case platform::REG_SZ:
    case platform::REG_EXPAND_SZ:
      return ReadDecimal(UnitsOf<Char>(data));
    default:
      return {};
  }
}

template <class Char>
void Compare(std::uint32_t type, fuzz::Bytes data) {
  const Number number = Kestrel::NumberOfRegistryValue<Char>(type, data);
  // Not compared, because the value of an environment variable does not come from the input.
  if (type == platform::REG_EXPAND_SZ && UnitsOf<Char>(data).find(U'%') != std::u32string::npos) return;
  fuzz::Check(number == ReadPlainly<Char>(type, data), "the number is that of a plain reading");
}

}  // namespace

/// First byte: the type, the rest the value's data.
FUZZ_TARGET(input) {
  constexpr std::uint32_t kTypes[] = {platform::REG_NONE,      platform::REG_SZ,
                                      platform::REG_EXPAND_SZ, platform::REG_BINARY,
                                      platform::REG_DWORD,     platform::REG_DWORD_BIG_ENDIAN,
                                      platform::REG_LINK,      platform::REG_MULTI_SZ,
                                      platform::REG_QWORD,     0x80000001};
  fuzz::Choices choices(input);
  const std::uint32_t type = kTypes[choices.Below(std::size(kTypes))];
  fuzz::Bounded(input, [&] {
    Compare<char16_t>(type, choices.Rest());
    Compare<char>(type, choices.Rest());
  });
}
