/// Scenarios from JSON. docs/scenario.md describes the form.
#pragma once

#include <string>
#include <string_view>

#include "simulator/json_document.h"
#include "simulator/scenario.h"

namespace simulator {

/// Throws ScenarioMistake for any mistake in the text. path: the file's name for the message.
Scenario ReadScenario(std::string_view json, const std::string& path);

}  // namespace simulator
