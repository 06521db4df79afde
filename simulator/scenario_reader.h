/// Scenarios from JSON. docs/scenario.md describes the form.
#pragma once

#include <string>
#include <string_view>

#include "simulator/json_document.h"
#include "simulator/scenario.h"

namespace simulator {

/// Throws ScenarioMistake for anything that is wrong with the text; path is what the mistake names.
Scenario ReadScenario(std::string_view json, const std::string& path);

}  // namespace simulator
