#include "tools/decode/hex_text.h"

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

}  // namespace tarnfind
