/// Large worlds from a count and a seed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/scenario.h"

namespace simulator {

struct GenerateOrder {
  std::size_t count = 0;
  std::uint32_t withinMs = 2000;  ///< the cameras are found one after the other, evenly over this time
  bool pictures = false;          ///< each camera's find is followed by its picture
  std::uint32_t changedPercent = 0;
  std::uint32_t gonePercent = 0;
};

/// Appends the cameras and their events. The same order and seed give the same world.
void AppendGenerated(const GenerateOrder& order, Scenario& scenario);

}  // namespace simulator
