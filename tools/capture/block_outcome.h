/// What the finder does with a pushed block: worked out by its own parser, with a wizard that notes what it gets.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tools/camera_snapshot.h"

namespace tarnfind {

struct BlockOutcome {
  bool delivered = false;
  std::string what;  ///< what the wizard gets; else why it gets nothing, in the words of tarn.dropped if it has any
  std::string mac;   ///< also of a dropped block, where one is to be found in it
  std::string ip;
  std::optional<CameraSnapshot> camera;  ///< as the wizard gets it
  bool isGone = false;                   ///< the camera was reported gone
};

/// hasCallback: whether the finder's callback still takes blocks.
BlockOutcome OutcomeOf(std::int32_t blockKind, std::uint32_t messageType, std::span<const std::uint8_t> block,
                       bool hasCallback);

}  // namespace tarnfind
