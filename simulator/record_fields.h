/// The members of a camera record under the names that scenarios use.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/json_document.h"
#include "simulator/scenario.h"

namespace simulator {

/// The change that sets the member of that name, the hardware address excepted: it is what a camera is known by.
/// Nothing for any other key. Throws ScenarioMistake for a value that the member cannot have.
std::optional<RecordChange> ReadRecordMember(std::string_view key, const JsonCursor& value);

/// A hardware address with upper-case digits.
std::string ReadMac(const JsonCursor& value);

/// Upper-case digits: how the simulator compares hardware addresses.
std::string NormalizedMac(std::string mac);

}  // namespace simulator
