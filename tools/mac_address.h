/// Hardware addresses in their usual forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnfind {

/// The address as 00:40:8C:12:34:56. Understands pairs with ":" or "-" between them, also without their leading zeros,
/// groups of four digits with "." between them, and twelve digits alone. Empty where the text is no hardware address.
std::optional<std::string> StandardMac(std::string_view text);

}  // namespace tarnfind
