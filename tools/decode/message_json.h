/// Decoded messages as JSON, and the way back to bytes.
///
/// A node is an object: "type", "name" and "value" where it has them, "meaning" for people, "items" for what it is made
/// of, "damage" where decoding stopped. Lengths, counts and terminators are not told: they follow from the rest, except
/// the "length" of a chunk that is not the size of its payload. Where the rest does not give the same bytes, because a
/// message is damaged or written in an unusual way, the object has its exact "bytes" in hexadecimal, and these count:
/// remove them to encode what stands beside them.
///
/// Encode(ToJson(Decode(bytes))) gives the bytes again, whatever they are.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/decode/node.h"

namespace tarnfind {

nlohmann::ordered_json ToJson(const Decoded& decoded);

/// One line: where in the JSON, and what is wrong.
struct EncodeError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
/// Throws EncodeError for what is no message. "meaning" and "damage" are ignored.
std::vector<std::uint8_t> Encode(const nlohmann::ordered_json& message);

}  // namespace tarnfind
