#include "tools/capture/difference_text.h"

#include <fmt/format.h>

#include "tools/json_objects.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

/// What a person calls the camera, beside its key.
std::string Description(const std::string& key, const Json& camera) {
  std::string description;
  for (const char* const field : {"ip", "vendor", "model"}) {
    const auto found = camera.find(field);
    if (found == camera.end() || !found->is_string() || found->get_ref<const std::string&>().empty()) continue;
    const std::string word = ' ' + found->get<std::string>();
    if (!key.ends_with(word)) description += word;
  }
  return description;
}

std::string Value(const Json& value) {
  return Printable(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string Lines(const CameraDifference& difference, const Json& camera) {
  std::string text = fmt::format("{:<9} {}\n", kDifferenceWords[difference.kind],
                                 Printable(difference.key + Description(difference.key, camera)));
  for (const FieldChange& change : difference.fields)
    text += fmt::format("          {}: {} -> {}\n", Printable(change.field), Value(change.before), Value(change.after));
  return text;
}

std::string Object(const CameraDifference& difference, const Json& camera) {
  Json object = {{"event", "difference"}, {"difference", kDifferenceWords[difference.kind]}, {"mac", difference.key}};
  if (difference.fields.empty()) object["camera"] = camera;
  Json fields = Json::object();
  for (const FieldChange& change : difference.fields)
    fields[change.field] = {{"before", change.before}, {"after", change.after}};
  if (!fields.empty()) object["fields"] = fields;
  return JsonLine(object);
}

}  // namespace

std::string DifferenceText(const CameraDifference& difference, const CameraSet& before, const CameraSet& after,
                           bool json) {
  const Json& camera = (difference.kind == CameraDifference::kGone ? before : after).at(difference.key);
  return json ? Object(difference, camera) : Lines(difference, camera);
}

std::string DifferenceCount(std::size_t count) {
  return Counted(count, "camera") + (count == 1 ? " differs" : " differ");
}

nlohmann::ordered_json ComparisonSummary(const char* command, const CameraSet& before, const CameraSet& after,
                                         std::size_t differences) {
  return {{"event", "summary"},
          {"command", command},
          {"before", before.size()},
          {"after", after.size()},
          {"differences", differences}};
}

}  // namespace tarnfind
