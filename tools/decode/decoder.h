/// Decodes messages into a tree that shows each byte, up to the byte where one stops making sense.
///
/// Nothing throws for what the bytes say. Memory is bounded by kMostNodes and the size of the input; binary data is
/// unfolded down to kDeepest levels. A memory address in a value is shown, never followed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tools/decode/node.h"

namespace tarnfind {

inline constexpr std::size_t kMostNodes = 1'000'000;
inline constexpr int kDeepest = 8;

/// What the bytes are.
enum class Form { kRequest, kReply, kBlock, kList, kFrame };

struct FormAndType {
  Form form = Form::kList;
  std::uint32_t messageType = 0;  ///< of a block; 0 where it is not known
};

Decoded Decode(std::vector<std::uint8_t> bytes, FormAndType what);

}  // namespace tarnfind
