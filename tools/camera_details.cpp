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

std::string CameraDetails(const CameraSnapshot& camera, std::int32_t type, bool showPasswords) {
  const std::pair<const char*, std::string> lines[] = {
      {"MAC", camera.mac},
      {"IP", camera.ip},
      {"Subnet mask", camera.subnetMask},
      {"Gateway", camera.gateway},
      {"DHCP", YesOrNo(camera.dhcp)},
      {"Vendor", camera.vendor},
      {"Model", camera.model},
      {"Firmware", camera.firmware},
      {"Plug-in", camera.plugin},
      {"Type", TypeText(type)},
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
  for (const auto& [label, value] : lines) result += fmt::format("{:<13} {}\n", label, Printable(value));
  return result;
}

}  // namespace tarnfind
