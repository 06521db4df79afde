#include "tools/camera_snapshot.h"

#include <algorithm>

#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr char kUnsetText[] = "(unset)";
/// Of a fixed length, also for an empty password, because the length is part of the secret.
constexpr char kHiddenText[] = "********";
/// What the library tells of a camera without a plug-in name.
constexpr char kNoPlugin[] = "UNKNOWN";

/// What the library puts into an assembled message: bit 17 alone.
constexpr std::uint32_t kAssembledDeviceFlags = 0x20000;

/// Whether `text` is `known` with its characters beyond ASCII lost. Texts of assembled messages pass through the
/// system's code page on their way.
bool IsDamagedForm(std::string_view text, std::string_view known) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < text.size() && j < known.size()) {
    const char32_t told = NextCodePoint(text, i);
    const char32_t original = NextCodePoint(known, j);
    const bool lost = original >= 0x80 && (told == U'?' || told == kReplacementCharacter);
    if (told != original && !lost) return false;
  }
  return i == text.size() && j == known.size();
}

/// Takes a text of an assembled message; an empty one was not told.
void Take(const std::string& told, std::string& text) {
  if (!told.empty() && !IsDamagedForm(told, text)) text = told;
}

/// The camera with everything above that level taken out.
CameraSnapshot Restricted(const CameraSnapshot& camera, Told level) {
  CameraSnapshot result = camera;
  if (level != Told::kEverything) {
    result = {};
    result.mac = camera.mac;
    if (level == Told::kAssembled) {
      result.ip = camera.ip;
      result.vendor = camera.vendor;
      result.plugin = camera.plugin;
    }
  }
  result.told = level;
  return result;
}

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

Told ToldBy(std::uint32_t eventKind, const CameraSnapshot& camera) {
  if (eventKind == Tarn::CameraFinding::cekGone) return Told::kMac;
  const bool openTexts = camera.user.empty() && camera.password.empty() && camera.subnetMask.empty() &&
                         camera.gateway.empty() && camera.firmware.empty() && camera.model == camera.vendor;
  const bool openFlags = !camera.dhcp && !camera.icb && !camera.gcb && camera.vendorTypeMask == 0 &&
                         camera.deviceFlags == kAssembledDeviceFlags;
  return eventKind == Tarn::CameraFinding::cekReported && openTexts && openFlags ? Told::kAssembled : Told::kEverything;
}

CameraSnapshot Merge(const CameraSnapshot& before, const CameraSnapshot& message) {
  CameraSnapshot after = message.told == Told::kEverything ? message : before;
  after.mac = before.mac;  // the same address, perhaps in another spelling
  if (message.told == Told::kEverything) return after;
  if (message.told == Told::kMac) return after;
  after.told = std::max(before.told, message.told);
  Take(message.ip, after.ip);
  Take(message.vendor, after.vendor);
  if (message.plugin != kNoPlugin) Take(message.plugin, after.plugin);
  return after;
}

bool Agree(const CameraSnapshot& a, const CameraSnapshot& b) {
  const Told level = std::min(a.told, b.told);
  return Restricted(a, level) == Restricted(b, level);
}

std::string ShownPassword(const std::string& password, bool reveal) {
  if (password == kUnsetCredential) return kUnsetText;
  return reveal ? password : kHiddenText;
}

std::string ShownUser(const std::string& user) {
  return user == kUnsetCredential ? kUnsetText : user;
}

}  // namespace tarnfind
