/// Hardware addresses in their usual forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnfind {

/// The address as 00:40:8C:12:34:56. Understands pairs with ":" or "-" between them, also without their leading zeros,
/// groups of four digits with "." between them, and twelve digits alone. Empty where the text is no hardware address.
std::optional<std::string> StandardMac(std::string_view text);

/// What the library gives for the hardware address of a camera that has told none.
inline constexpr char kUnknownMac[] = "UNKNOWN";

/// What tells a camera from all others: its hardware address, in the standard form where it has one. All cameras with
/// an unknown address share that text, so their IP address follows it: "UNKNOWN 10.0.0.5".
std::string CameraKey(const std::string& mac, const std::string& ip);

}  // namespace tarnfind
