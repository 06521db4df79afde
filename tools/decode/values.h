/// What the payload of a variant record says.
#pragma once

#include <cstdint>
#include <span>

#include "tools/decode/node.h"

namespace tarnfind {

/// Sets the node's value, and its meaning where the value does not say it all. Requires a tag below 21 and a payload of
/// at least the size of its type, with the terminator of a text.
void SetValue(Node& node, std::uint8_t tag, std::span<const std::uint8_t> payload);
/// Adds what the value means for an entry of the node's name.
void Explain(Node& node);

}  // namespace tarnfind
