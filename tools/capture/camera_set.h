/// The cameras that a capture or a saved search leaves behind, and how two such sets differ.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace tarnfind {

/// By CameraKey: the camera as `tarnfind search --json` shows it.
using CameraSet = std::map<std::string, nlohmann::ordered_json>;

/// Reads a capture, or the lines of `tarnfind search --json` or `list --json`. What was reported gone is not in it.
/// Throws WrongUse for anything else.
CameraSet ReadCameraSet(const std::string& path);

/// Takes one object of `search --json` into the set. Returns the key of its camera: empty where the object shows no
/// camera, nullopt where it shows a camera without an address.
std::optional<std::string> TakeCameraObject(CameraSet& cameras, const nlohmann::ordered_json& object);

struct FieldChange {
  std::string field;
  nlohmann::ordered_json before;
  nlohmann::ordered_json after;
};
struct CameraDifference {
  enum Kind { kAppeared, kGone, kMoved, kChanged };

  std::string key;
  Kind kind;
  std::vector<FieldChange> fields;  ///< of a camera that is in both
};
inline constexpr const char* kDifferenceWords[] = {"appeared", "gone", "moved", "changed"};

/// In the order of the keys. A camera with another IP address has moved, whatever else has changed. Fields that
/// one side does not tell are not compared, nor are credentials that were masked on either side.
std::vector<CameraDifference> Compare(const CameraSet& before, const CameraSet& after);

}  // namespace tarnfind
