/// The members of a camera record under the names that scenarios use.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/json_document.h"
#include "simulator/scenario.h"

namespace simulator {

/// The change that sets the record's member of that name. Empty for an unknown key, and for the hardware address, which
/// no event may change. Throws ScenarioMistake for a value that the member cannot have.
std::optional<RecordChange> ReadRecordMember(std::string_view key, const JsonCursor& value);

/// The keys that ReadRecordMember knows.
std::vector<std::string_view> RecordMemberKeys();

/// A hardware address, with upper-case digits. Throws ScenarioMistake for any other text.
std::string ReadMac(const JsonCursor& value);

/// The address with upper-case digits. Hardware addresses are compared in this form.
std::string NormalizedMac(std::string mac);

}  // namespace simulator
