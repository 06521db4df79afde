#include "tools/json_objects.h"

#include <fmt/format.h>

#include "tools/text.h"

namespace tarnfind {

Json CameraObject(const CameraSnapshot& camera, bool showPasswords) {
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

std::string JsonLine(const Json& object) {
  const std::string dumped = object.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string line;
  line.reserve(dumped.size() + 1);
  for (std::size_t position = 0; position < dumped.size();) {
    const char32_t codePoint = NextCodePoint(dumped, position);
    if (IsControl(codePoint))
      line += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(codePoint));
    else
      AppendUtf8(line, codePoint);
  }
  return line + '\n';
}

}  // namespace tarnfind
