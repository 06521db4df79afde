/// What one camera's getters told at one moment.
#pragma once

#include <cstdint>
#include <string>

#include "tarn/camera_finding.h"
#include "tools/text.h"

namespace tarnfind {

/// User name and password of a camera whose credentials nobody has supplied.
inline const std::string kUnsetCredential = Utf8FromUtf16(Tarn::CameraFinding::UnsetCredential);

/// How a server says that there is no IP address.
inline constexpr char kNoIpAddress[] = "0.0.0.0";

/// How much of a camera a message tells, or all messages together. Each level includes those before it.
enum class Told {
  kMac,         ///< the hardware address alone: the message that a camera has gone
  kAssembled,   ///< IP address, vendor and plug-in too: the message that the server assembles from single fields
  kEverything,  ///< a whole record
};

/// Texts are valid UTF-8 but otherwise as the camera gave them; make them Printable before they reach a terminal.
struct CameraSnapshot {
  Told told = Told::kEverything;  ///< members above this level are not from the camera
  std::int32_t type = 0;
  std::string mac;
  std::string ip;
  std::string subnetMask;
  std::string gateway;
  std::string model;
  std::string firmware;
  std::string user;
  std::string password;
  bool dhcp = false;
  std::string plugin;
  bool flag17 = false;
  std::uint32_t deviceFlags = 0;
  std::uint64_t vendorTypeMask = 0;
  bool icb = false;
  bool gcb = false;
  std::uint8_t ctt = 0;
  std::string vendor;

  bool operator==(const CameraSnapshot&) const = default;
};

/// Calls every getter once, except the two that tell nothing of their own: GetModelName and IsReserved.
CameraSnapshot SnapshotOf(Tarn::CameraFinding::ICameraInfo& camera);

/// What an event of that kind tells of its camera. An assembled message has no mark of its own; it is known by the
/// values that the library puts into the members which such a message leaves open.
Told ToldBy(std::uint32_t eventKind, const CameraSnapshot& camera);

/// `before` with what `message` tells; the rest stays.
CameraSnapshot Merge(const CameraSnapshot& before, const CameraSnapshot& message);
/// Whether both agree in all that both of them tell.
bool Agree(const CameraSnapshot& a, const CameraSnapshot& b);

/// What may be shown of a password: asterisks for one that is set, unless `reveal`; "(unset)" for none.
std::string ShownPassword(const std::string& password, bool reveal);
/// The user name, or "(unset)".
std::string ShownUser(const std::string& user);

}  // namespace tarnfind
