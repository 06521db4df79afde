#include "tools/decode/hex_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/hex_digits.h"
#include "tools/decode/input.h"

namespace tarnfind {

namespace {

using Bytes = std::vector<std::uint8_t>;

std::optional<std::uint8_t> ByteAt(std::string_view text, std::size_t at) {
  const int high = at < text.size() ? Kestrel::HexDigitValue(text[at]) : -1;
  const int low = at + 1 < text.size() ? Kestrel::HexDigitValue(text[at + 1]) : -1;
  if (high < 0 || low < 0) return std::nullopt;
  return static_cast<std::uint8_t>(high << 4 | low);
}

struct DumpLine {
  std::size_t offset = 0;
  Bytes bytes;
  bool isWords = false;
};

/// What stands between the offset and the bytes tells the kind of dump.
struct DumpKind {
  std::string_view behindOffset;
  std::string_view behindBytes;  ///< then the characters follow
  std::size_t mostBytes;         ///< of a line
  bool isWords;                  ///< of two bytes, the low one printed last
};
constexpr DumpKind kDumpKinds[] = {
    {":", "  ", 256, false},   // xxd
    {"  ", "   ", 16, false},  // hexdump -C, which leaves two blanks after eight bytes, and Wireshark
    {" ", "  ", 16, true},     // hexdump
};

std::optional<DumpLine> ReadDumpLine(std::string_view line) {
  DumpLine result;
  line = line.substr(0, line.find('|'));
  std::size_t at = 0;
  for (; at < line.size() && Kestrel::HexDigitValue(line[at]) >= 0; ++at)
    result.offset = result.offset << 4 | static_cast<std::size_t>(Kestrel::HexDigitValue(line[at]));
  if (at < 4 || at > 8) return std::nullopt;
  if (at == line.size()) return result;
  const auto kind = std::ranges::find_if(
      kDumpKinds, [&](const DumpKind& row) { return line.substr(at).starts_with(row.behindOffset); });
  if (kind == std::end(kDumpKinds)) return std::nullopt;
  result.isWords = kind->isWords;
  at = line.find_first_not_of(": ", at);
  while (at < line.size() && result.bytes.size() < kind->mostBytes && !line.substr(at).starts_with(kind->behindBytes)) {
    if (line[at] == ' ') {
      ++at;
      continue;
    }
    const auto first = ByteAt(line, at), second = kind->isWords ? ByteAt(line, at + 2) : first;
    if (!first || !second) return std::nullopt;
    if (kind->isWords) result.bytes.push_back(*second);
    result.bytes.push_back(*first);
    at += kind->isWords ? 4 : 2;
  }
  return result;
}

}  // namespace

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text(2 * bytes.size(), '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text[2 * i] = Kestrel::kLowerHexDigits[bytes[i] >> 4];
    text[2 * i + 1] = Kestrel::kLowerHexDigits[bytes[i] & 15];
  }
  return text;
}

std::optional<Bytes> BytesOfHex(std::string_view text) {
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n' || text[i] == ',') continue;
    const auto byte = ByteAt(text, i);
    if (!byte) return std::nullopt;
    bytes.push_back(*byte);
    ++i;
  }
  return bytes;
}

std::optional<Bytes> BytesOfDump(std::string_view text) {
  Bytes bytes;
  DumpLine last;
  bool repeats = false;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line == "*") {
      repeats = true;
      continue;
    }
    auto read = ReadDumpLine(line);
    if (!read || read->offset > kLargestInput) return std::nullopt;
    while (repeats && !last.bytes.empty() && bytes.size() < read->offset)
      bytes.insert(bytes.end(), last.bytes.begin(), last.bytes.end());
    repeats = false;
    // The offset behind the last line is the size, which a last word of one byte exceeds.
    if (last.isWords && read->bytes.empty() && bytes.size() == read->offset + 1) bytes.pop_back();
    // The offsets prove that nothing else was taken for a byte.
    if (read->offset != bytes.size()) return std::nullopt;
    bytes.insert(bytes.end(), read->bytes.begin(), read->bytes.end());
    last = std::move(*read);
  }
  return bytes.empty() ? std::nullopt : std::optional(bytes);
}

}  // namespace tarnfind
