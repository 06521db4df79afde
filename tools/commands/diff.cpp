#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "tools/capture/camera_set.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// What a person calls the camera.
std::string Description(const Json& camera) {
  const auto text = [&](const char* field) {
    const auto found = camera.find(field);
    return found != camera.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  return Printable(text("ip") + " " + text("vendor") + " " + text("model"));
}

void WriteLine(const CameraDifference& difference, const Json& camera, TextOutput& output) {
  output.Write(
      fmt::format("{:<9} {} {}\n", kDifferenceWords[difference.kind], Printable(difference.mac), Description(camera)));
  for (const FieldChange& change : difference.fields)
    output.Write(fmt::format("          {}: {} -> {}\n", Printable(change.field),
                             Printable(change.before.dump(-1, ' ', false, Json::error_handler_t::replace)),
                             Printable(change.after.dump(-1, ' ', false, Json::error_handler_t::replace))));
}

void WriteObject(const CameraDifference& difference, const Json& camera, TextOutput& output) {
  Json object = {{"event", "difference"}, {"difference", kDifferenceWords[difference.kind]}, {"mac", difference.mac}};
  if (difference.fields.empty()) object["camera"] = camera;
  Json fields = Json::object();
  for (const FieldChange& change : difference.fields)
    fields[change.field] = {{"before", change.before}, {"after", change.after}};
  if (!fields.empty()) object["fields"] = fields;
  output.Write(JsonLine(object));
}

}  // namespace

void RunDiff(const Options& options, TextOutput& output) {
  const CameraSet before = ReadCameraSet(options.capture.file);
  const CameraSet after = ReadCameraSet(options.capture.target);
  const std::vector<CameraDifference> differences = Compare(before, after);
  for (const CameraDifference& difference : differences) {
    const Json& camera = (difference.kind == CameraDifference::kGone ? before : after).at(difference.mac);
    options.json ? WriteObject(difference, camera, output) : WriteLine(difference, camera, output);
  }
  if (options.json)
    output.Write(JsonLine({{"event", "summary"},
                           {"command", "diff"},
                           {"before", before.size()},
                           {"after", after.size()},
                           {"differences", differences.size()}}));
  if (!differences.empty())
    throw Failure(Counted(differences.size(), "camera") + (differences.size() == 1 ? " differs" : " differ"));
}

}  // namespace tarnfind
