#include "tools/decode/hex_text.h"

#include <algorithm>

#include "base/hex_digits.h"

namespace tarnfind {

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text(2 * bytes.size(), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text[2 * i] = Kestrel::kLowerHexDigits[bytes[i] >> 4];
    text[2 * i + 1] = Kestrel::kLowerHexDigits[bytes[i] & 15];
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> BytesOfHex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n' || text[i] == ',') continue;
    const int high = Kestrel::HexDigitValue(text[i]);
    const int low = i + 1 < text.size() ? Kestrel::HexDigitValue(text[i + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    ++i;
  }
  return bytes;
}

std::optional<std::vector<std::uint8_t>> BytesOfDump(std::string_view text) {
  constexpr std::size_t kBytesOfALine = 16;
  std::vector<std::uint8_t> bytes;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    line = line.substr(0, line.find('|'));
    std::size_t offset = 0, digits = 0;
    for (; digits < line.size() && Kestrel::HexDigitValue(line[digits]) >= 0; ++digits)
      offset = offset << 4 | static_cast<std::size_t>(Kestrel::HexDigitValue(line[digits]));
    const std::string_view behind = line.substr(digits);
    const bool isOffset = behind.starts_with(':') || behind.starts_with("  ") || behind.empty() || behind == "\r";
    // The offsets prove that nothing else was taken for a byte.
    if (digits < 4 || digits > 8 || !isOffset || offset != bytes.size()) return std::nullopt;
    std::size_t at = line.find_first_not_of(": ", digits);
    const std::size_t end = bytes.size() + kBytesOfALine;
    while (bytes.size() < end && at < line.size()) {
      if (line.substr(at).starts_with("   ")) break;  // the characters follow
      if (line[at] == ' ' || line[at] == '\r') {
        ++at;
        continue;
      }
      const int high = Kestrel::HexDigitValue(line[at]);
      const int low = at + 1 < line.size() ? Kestrel::HexDigitValue(line[at + 1]) : -1;
      if (high < 0 || low < 0) return std::nullopt;
      bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
      at += 2;
    }
  }
  return bytes.empty() ? std::nullopt : std::optional(bytes);
}

}  // namespace tarnfind
