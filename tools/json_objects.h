/// JSON output: one object per line, keys in a fixed order. The same events give the same bytes, except with --times
/// and in the milliseconds of check. docs/tarnfind.schema.json describes every object.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tools/found_cameras.h"

namespace tarnfind {

using Json = nlohmann::ordered_json;

struct JsonOptions {
  bool showPasswords = false;
  bool times = false;  ///< "time" in every event, "seconds" in the summary
};

/// What has been told of the camera; the rest is left out. Credentials that were never supplied are null; a password
/// that is set is hidden unless `showPasswords`.
Json CameraObject(const CameraSnapshot& camera, bool showPasswords);

/// kind: of the event; empty for a camera of the server's list.
Json CameraEventObject(const FoundCamera& found, std::optional<std::uint32_t> kind, const FoundCameras& cameras,
                       const JsonOptions& options);
/// camera: null where the text means none that is known.
Json PictureObject(const PictureEvent& event, const FoundCamera* camera, const JsonOptions& options);
Json ValuesObject(const ValuesEvent& event, const FoundCamera* camera, const JsonOptions& options);
/// [{"ip": …, "macs": […]}]
Json SharedIpsArray(const FoundCameras& cameras);

/// The object and a line end. Invalid UTF-8 becomes U+FFFD. Control characters are escaped, also those that JSON would
/// let through, because the line may end up on a terminal.
std::string JsonLine(const Json& object);
/// The object of a line of a search; something else where it is no JSON, or nested deeper than any such line.
Json ParseJsonLine(std::string_view line);

}  // namespace tarnfind
