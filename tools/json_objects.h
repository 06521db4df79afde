/// JSON output: one object per line, keys in a fixed order, nothing in it that differs from run to run.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/camera_snapshot.h"
#include "tools/text_output.h"

namespace tarnfind {

using Json = nlohmann::ordered_json;

/// Credentials that were never supplied are null; a password that is set is hidden unless `showPasswords`.
Json CameraObject(const CameraSnapshot& camera, bool showPasswords);
/// The object and a line end. Invalid UTF-8 becomes U+FFFD; control characters are escaped, also those that JSON would
/// let through, for the line may end up on a terminal.
std::string JsonLine(const Json& object);

}  // namespace tarnfind
