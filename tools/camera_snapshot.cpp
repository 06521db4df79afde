#include "tools/camera_snapshot.h"

#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr char kUnsetText[] = "(unset)";
/// Of a fixed length, for an empty password too: the length is part of the secret.
constexpr char kHiddenText[] = "********";

}  // namespace

CameraSnapshot SnapshotOf(Tarn::CameraFinding::ICameraInfo& camera) {
  CameraSnapshot snapshot;
  snapshot.type = camera.GetCameraType();
  snapshot.mac = TakeBstr(camera.GetMacAddress());
  snapshot.ip = TakeBstr(camera.GetIpAddress());
  snapshot.subnetMask = TakeBstr(camera.GetSubnetMask());
  snapshot.gateway = TakeBstr(camera.GetGateway());
  snapshot.model = TakeBstr(camera.GetModel());
  snapshot.firmware = TakeBstr(camera.GetFirmwareVersion());
  snapshot.user = TakeBstr(camera.GetUserName());
  snapshot.password = TakeBstr(camera.GetPassword());
  snapshot.dhcp = camera.IsDhcpEnabled() != 0;
  snapshot.plugin = TakeBstr(camera.GetPluginName());
  snapshot.flag17 = camera.HasDeviceFlag17() != 0;
  snapshot.deviceFlags = camera.GetDeviceFlags();
  snapshot.vendorTypeMask = camera.GetVendorTypeMask();
  snapshot.icb = camera.GetIcb() != 0;
  snapshot.gcb = camera.GetGcb() != 0;
  snapshot.ctt = camera.GetCtt();
  snapshot.vendor = TakeBstr(camera.GetVendorDisplayName());
  return snapshot;
}

std::string ShownPassword(const std::string& password, bool reveal) {
  if (password == kUnsetCredential) return kUnsetText;
  return reveal ? password : kHiddenText;
}

std::string ShownUser(const std::string& user) {
  return user == kUnsetCredential ? kUnsetText : user;
}

}  // namespace tarnfind
