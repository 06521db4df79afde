/// What arguments may look like. Each function gives an empty text for a good argument, else what is wrong with it; the
/// two that take a reference bring a good one into its standard form.
#pragma once

#include <string>

namespace tarnfind {

/// Six hexadecimal pairs with ":" or "-" between; becomes upper case with ":".
std::string NormaliseMac(std::string& text);
/// An IPv4 address, four numbers without leading zeros.
std::string CheckIpAddress(const std::string& text);
/// An IPv4 address whose one bits stand before its zero bits.
std::string CheckSubnetMask(const std::string& text);
/// A number of seconds from 0 to a day, with decimals if need be.
std::string CheckSeconds(const std::string& text);
/// Text that can be sent: valid UTF-8. A password must not be changed on its way.
std::string CheckText(const std::string& text);

}  // namespace tarnfind
