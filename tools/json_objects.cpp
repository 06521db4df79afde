#include "tools/json_objects.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {

namespace {

Json EventObject(const char* event, WallTime at, const JsonOptions& options) {
  Json object = {{"event", event}};
  if (options.times) object["time"] = UtcTime(at);
  return object;
}

Json MacOrNull(const FoundCamera* camera) {
  return camera ? Json(camera->camera.mac) : Json(nullptr);
}

}  // namespace

Json CameraObject(const CameraSnapshot& camera, bool showPasswords) {
  if (camera.told == Told::kMac) return {{"mac", camera.mac}};
  if (camera.told == Told::kAssembled)
    return {{"mac", camera.mac}, {"ip", camera.ip}, {"plugin", camera.plugin}, {"vendor", camera.vendor}};
  const auto credential = [](const std::string& value, std::string shown) {
    return value == kUnsetCredential ? Json(nullptr) : Json(std::move(shown));
  };
  return {
      {"type", camera.type},
      {"mac", camera.mac},
      {"ip", camera.ip},
      {"subnetMask", camera.subnetMask},
      {"gateway", camera.gateway},
      {"model", camera.model},
      {"firmware", camera.firmware},
      {"user", credential(camera.user, camera.user)},
      {"password", credential(camera.password, ShownPassword(camera.password, showPasswords))},
      {"dhcp", camera.dhcp},
      {"plugin", camera.plugin},
      {"flag17", camera.flag17},
      {"deviceFlags", camera.deviceFlags},
      {"vendorTypeMask", fmt::format("{:#x}", camera.vendorTypeMask)},
      {"icb", camera.icb},
      {"gcb", camera.gcb},
      {"ctt", camera.ctt},
      {"vendor", camera.vendor},
  };
}

Json CameraEventObject(const FoundCamera& found, std::optional<std::uint32_t> kind, const FoundCameras& cameras,
                       const JsonOptions& options) {
  Json object = EventObject("camera", found.lastSeen, options);
  object["change"] = RowOf(found.lastChange).word;
  if (kind) object["kind"] = *kind;
  object["type"] = found.typeKnown ? Json(found.type) : Json(nullptr);
  object["camera"] = CameraObject(found.camera, options.showPasswords);
  if (cameras.SharesIp(found)) object["sharedIp"] = true;
  if (!found.listedTwiceAt.empty()) object["listedTwiceAt"] = found.listedTwiceAt;
  return object;
}

Json PictureObject(const PictureEvent& event, const FoundCamera* camera, const JsonOptions& options) {
  Json object = EventObject("picture", event.at, options);
  object.update({{"camera", event.camera},
                 {"mac", MacOrNull(camera)},
                 {"bytes", event.bytes},
                 {"crc32", fmt::format("{:08x}", event.crc32)},
                 {"file", event.file.empty() ? Json(nullptr) : Json(event.file)}});
  if (!event.error.empty()) object["error"] = event.error;
  return object;
}

Json ValuesObject(const ValuesEvent& event, const FoundCamera* camera, const JsonOptions& options) {
  Json object = EventObject("values", event.at, options);
  object.update({{"camera", event.camera}, {"mac", MacOrNull(camera)}, {"values", event.values}});
  return object;
}

Json SharedIpsArray(const FoundCameras& cameras) {
  Json array = Json::array();
  for (const auto& [ip, users] : cameras.SharedIps()) {
    Json macs = Json::array();
    for (const FoundCamera* const user : users) macs.push_back(user->camera.mac);
    array.push_back({{"ip", ip}, {"macs", std::move(macs)}});
  }
  return array;
}

std::string JsonLine(const Json& object) {
  const std::string dumped = object.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string line;
  line.reserve(dumped.size() + 1);
  for (std::size_t position = 0; position < dumped.size();) {
    const std::size_t start = position;
    const bool control = IsControl(NextCodePoint(dumped, position));
    const std::string_view character = std::string_view(dumped).substr(start, position - start);
    if (!control) {
      line += character;
    } else {
      for (const char16_t unit : Utf16FromUtf8(character))
        line += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(unit));
    }
  }
  return line + '\n';
}

Json ParseJsonLine(std::string_view line) {
  constexpr int kDeepestLevel = 8;
  bool tooDeep = false;
  const auto watch = [&](int depth, Json::parse_event_t, Json&) {
    tooDeep |= depth > kDeepestLevel;
    return !tooDeep;
  };
  Json object = Json::parse(line, watch, false);
  return tooDeep ? Json() : object;
}

}  // namespace tarnfind
