#include <cstring>

#include "fuzz_target.h"
#include "tools/decode/decoder.h"
#include "tools/decode/message_json.h"

/// JSON of any kind: bytes, or a refusal in one line.
FUZZ_TARGET(input) {
  const auto json = nlohmann::ordered_json::parse(input, nullptr, false);
  if (json.is_discarded()) return;
  try {
    static_cast<void>(tarnfind::Encode(json));
  } catch (const tarnfind::EncodeError& error) {
    fuzz::Check(std::strchr(error.what(), '\n') == nullptr, "a refusal is one line");
  }
}
