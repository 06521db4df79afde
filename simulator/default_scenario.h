/// The scenario that is played where TARN_SIMULATOR_SCENARIO names no other: simulator/default_scenario.json, which the
/// build embeds.
#pragma once

#include <string_view>

namespace simulator {

extern const std::string_view kDefaultScenario;

}  // namespace simulator
