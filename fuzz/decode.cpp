#include "fuzz_target.h"
#include "tools/decode/decoder.h"
#include "tools/decode/message_json.h"

/// First byte: the form of the rest; second: its message type. Encoding what was decoded gives the same bytes, also
/// from the JSON's text.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const auto form = static_cast<tarnfind::Form>(choices.Below(5));
  const std::uint32_t messageType = choices.Below(10);
  const std::vector<std::uint8_t> bytes(choices.Rest().begin(), choices.Rest().end());
  const auto json = tarnfind::ToJson(tarnfind::Decode(bytes, {form, messageType}));
  fuzz::Check(tarnfind::Encode(json) == bytes, "encoding gives the bytes again");
  const std::string text = json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  fuzz::Check(tarnfind::Encode(nlohmann::ordered_json::parse(text)) == bytes, "the JSON's text gives the bytes again");
}
