#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tools/commands/commands.h"
#include "tools/decode/hex_text.h"
#include "tools/decode/input.h"
#include "tools/decode/message_json.h"
#include "tools/failure.h"

namespace tarnfind {

void RunEncode(const Options& options, TextOutput& output) {
  const std::vector<std::uint8_t> text = ReadInput(options.capture.file);
  std::vector<std::uint8_t> bytes;
  try {
    bytes = Encode(nlohmann::ordered_json::parse(text));
  } catch (const nlohmann::ordered_json::parse_error& error) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
    throw WrongUse(fmt::format("the input is no JSON: wrong at line {}", 1 + std::count(text.begin(), end, '\n')));
  } catch (const EncodeError& error) {
    throw WrongUse(error.what());
  }
  if (options.capture.hex)
    output.Write(HexText(bytes) + "\n");
  else
    output.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace tarnfind
