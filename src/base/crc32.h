/// CRC-32 as ZIP and PNG use it: polynomial 0x04C11DB7 with reflected bits (0xEDB88320), 0xFFFFFFFF at the start,
/// inverted at the end.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace Kestrel {

inline constexpr std::array<std::uint32_t, 256> kCrc32Table = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t row = i;
    for (int bit = 0; bit < 8; ++bit) row = row & 1 ? row >> 1 ^ 0xEDB88320 : row >> 1;
    table[i] = row;
  }
  return table;
}();

inline std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const std::uint8_t byte : bytes) crc = crc >> 8 ^ kCrc32Table[(crc ^ byte) & 0xFF];
  return ~crc;
}

}  // namespace Kestrel
