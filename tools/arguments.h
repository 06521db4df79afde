/// What arguments may look like. Each check gives an empty text for a good argument, else what is wrong with it.
/// Normalise… also brings a good argument into its standard form; a wrong one stays as it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnfind {

/// A hardware address in any usual form; becomes 00:40:8C:12:34:56.
std::string NormaliseMac(std::string& text);
/// An IPv4 address, four numbers without leading zeros.
std::string CheckIpAddress(const std::string& text);
/// An IPv4 address, or a hardware address in any usual form, which becomes 00:40:8C:12:34:56.
std::string NormaliseAddress(std::string& text);
/// An IPv4 address whose one bits stand before its zero bits.
std::string CheckSubnetMask(const std::string& text);
/// A number of seconds from 0 to a day, with decimals if need be.
std::string CheckSeconds(const std::string& text);
/// Valid UTF-8, because the text could not be sent unchanged otherwise.
std::string CheckText(const std::string& text);
/// A whole number from 0 to 2^32 - 1.
std::string CheckCount(const std::string& text);

/// The address as a number, its first part in the highest byte. Empty where the text is no IPv4 address.
std::optional<std::uint32_t> ParseIpAddress(std::string_view text);

}  // namespace tarnfind
