#include "tools/decode/hex_text.h"

namespace tarnfind {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

int DigitOf(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

}  // namespace

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text(2 * bytes.size(), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 15];
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> BytesOfHex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n' || text[i] == ',') continue;
    const int high = DigitOf(text[i]);
    const int low = i + 1 < text.size() ? DigitOf(text[i + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    ++i;
  }
  return bytes;
}

}  // namespace tarnfind
