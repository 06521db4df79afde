/// The scenario of a simulator that is told of no other: simulator/default_scenario.json, embedded by the build.
#pragma once

#include <string_view>

namespace simulator {

extern const std::string_view kDefaultScenario;

}  // namespace simulator
