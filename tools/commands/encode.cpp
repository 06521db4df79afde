#include <fmt/format.h>

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
    throw WrongUse(fmt::format("the input is no JSON: {}", error.what()));
  } catch (const EncodeError& error) {
    throw WrongUse(error.what());
  }
  if (options.capture.hex)
    output.Write(HexText(bytes) + "\n");
  else
    output.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace tarnfind
