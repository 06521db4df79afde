#include <fmt/format.h>

#include "tools/arguments.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/finder_session.h"
#include "tools/json_objects.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::ICameraInfo;

/// How a network command is sent, by its type.
using SendFunction = std::uint8_t (ICameraFinder::*)(ICameraInfo* camera);
SendFunction SendFunctionOf(int type) {
  return type == 4 ? &ICameraFinder::SendNetworkCommandType4 : &ICameraFinder::SendNetworkCommandType1;
}

/// Servers write hardware addresses in more than one way.
bool HasMac(ICameraInfo& camera, const std::string& normalMac) {
  std::string mac = TakeBstr(camera.GetMacAddress());
  NormaliseMac(mac);
  return mac == normalMac;
}

Reference<ICameraInfo> FindByMac(ICameraFinder& finder, const std::string& mac) {
  Reference<ICameraInfo> found;
  ForEachFoundCamera(finder, [&](ICameraInfo& camera) {
    if (found || !HasMac(camera, mac)) return;
    camera.AddRef();
    found.reset(&camera);
  });
  return found;
}

void Change(ICameraInfo& camera, const Options& options) {
  const CameraSnapshot present = SnapshotOf(camera);
  const auto text = [](const std::optional<std::string>& given, const std::string& kept) {
    return Utf16FromUtf8(given.value_or(kept));
  };
  if (options.newUser || options.newPassword)
    camera.SetCredentials(text(options.newUser, present.user).c_str(),
                          text(options.newPassword, present.password).c_str());
  camera.SetNetworkSettings(text(options.newIp, present.ip).c_str(), text(options.newMask, present.subnetMask).c_str(),
                            options.newDhcp.value_or(present.dhcp) ? 1 : 0,
                            text(options.newGateway, present.gateway).c_str());
}

/// Whether the server lists the camera with the network settings of `sent`.
bool IsListedWith(ICameraFinder& finder, const CameraSnapshot& sent, const std::string& mac) {
  const Reference<ICameraInfo> listed = FindByMac(finder, mac);
  if (!listed) return false;
  const CameraSnapshot now = SnapshotOf(*listed);
  return now.ip == sent.ip && now.subnetMask == sent.subnetMask && now.gateway == sent.gateway && now.dhcp == sent.dhcp;
}

}  // namespace

void RunSetNetwork(const Options& options, TextOutput& output) {
  if (!options.newIp && !options.newMask && !options.newGateway && !options.newDhcp && !options.newUser &&
      !options.newPassword)
    throw WrongUse("nothing to change; give --ip, --mask, --gateway, --dhcp, --static, --user or --password");

  FinderSession session(options.library);
  ICameraFinder& finder = session.Finder();
  const Reference<ICameraInfo> camera = FindByMac(finder, options.mac);
  if (!camera) throw Failure(fmt::format("the server has found no camera {}", options.mac));
  Change(*camera, options);
  if (!(finder.*SendFunctionOf(options.networkCommandType))(camera.get()))
    throw Failure(fmt::format("the settings of {} could not be sent", options.mac));

  const CameraSnapshot sent = SnapshotOf(*camera);
  const bool listed = IsListedWith(finder, sent, options.mac);
  if (!options.json) {
    output.Write(fmt::format("Sent the settings of {} ({}): IP {}, mask {}, gateway {}, {}. {}\n", options.mac,
                             Printable(sent.model), Printable(sent.ip), Printable(sent.subnetMask),
                             Printable(sent.gateway), sent.dhcp ? "DHCP" : "static",
                             listed ? "The server lists them." : "The server does not list them yet."));
    return;
  }
  output.Write(JsonLine({{"event", "sent"},
                         {"networkCommandType", options.networkCommandType},
                         {"camera", CameraObject(sent, options.showPasswords)}}));
  output.Write(JsonLine({{"event", "summary"}, {"command", "set-network"}, {"mac", options.mac}, {"listed", listed}}));
}

}  // namespace tarnfind
