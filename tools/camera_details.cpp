#include "tools/camera_details.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/text.h"

namespace tarnfind {

namespace {

std::string TypeText(std::int32_t type) {
  using Tarn::CameraFinding::CameraTypeNames;
  const auto* const row = std::find_if(std::begin(CameraTypeNames), std::end(CameraTypeNames),
                                       [&](const auto& candidate) { return candidate.type == type; });
  return row == std::end(CameraTypeNames) ? fmt::format("{}", type)
                                          : fmt::format("{} ({})", type, Utf8FromUtf16(row->name));
}

const char* YesOrNo(bool value) {
  return value ? "yes" : "no";
}

}  // namespace

std::string CameraDetails(const FoundCamera& found, bool showPasswords) {
  const CameraSnapshot& camera = found.camera;
  struct Line {
    const char* label;
    std::string value;
    Told needs = Told::kEverything;
  };
  const Line lines[] = {
      {"MAC", camera.mac, Told::kMac},
      {"IP", camera.ip, Told::kAssembled},
      {"Subnet mask", camera.subnetMask},
      {"Gateway", camera.gateway},
      {"DHCP", YesOrNo(camera.dhcp)},
      {"Vendor", camera.vendor, Told::kAssembled},
      {"Model", camera.model},
      {"Firmware", camera.firmware},
      {"Plug-in", camera.plugin, Told::kAssembled},
      {"Type", found.typeKnown ? TypeText(found.type) : "?", Told::kMac},
      {"User", ShownUser(camera.user)},
      {"Password", ShownPassword(camera.password, showPasswords)},
      {"Vendor mask", fmt::format("{:#x}", camera.vendorTypeMask)},
      {"Device flags", fmt::format("{:#x}", camera.deviceFlags)},
      {"Flag 17", YesOrNo(camera.flag17)},
      {"ICB", YesOrNo(camera.icb)},
      {"GCB", YesOrNo(camera.gcb)},
      {"CTT", fmt::format("{}", camera.ctt)},
  };
  std::string result;
  for (const Line& line : lines)
    result += fmt::format("{:<13} {}\n", line.label, camera.told < line.needs ? "?" : Printable(line.value));
  return result;
}

}  // namespace tarnfind
