/// Bytes as hexadecimal digits.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnfind {

/// Two lower-case digits for each byte, nothing between them.
std::string HexText(std::span<const std::uint8_t> bytes);
/// The bytes of pairs of digits, with blanks, line ends or commas between pairs; nothing where anything else stands
/// there.
std::optional<std::vector<std::uint8_t>> BytesOfHex(std::string_view text);
/// The bytes of a dump with offsets, as xxd, hexdump with and without -C, and Wireshark print one: also where "*"
/// stands for lines like the one above. Nothing where it is none.
std::optional<std::vector<std::uint8_t>> BytesOfDump(std::string_view text);

}  // namespace tarnfind
