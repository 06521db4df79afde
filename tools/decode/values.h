/// What the payload of a variant record says.
#pragma once

#include <cstdint>
#include <span>

#include "tools/decode/node.h"

namespace tarnfind {

/// Sets the node's value, and its meaning where the value does not say it all. Requires a tag below 21 and a payload of
/// exactly the size of its type; that of a text at least with its terminator.
void SetValue(Node& node, std::uint8_t tag, std::span<const std::uint8_t> payload);
/// Adds what the value means for an entry of the node's name.
void Explain(Node& node);

}  // namespace tarnfind
