#include "simulator/generated_world.h"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "simulator/random.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

struct VendorRow {
  std::string_view macPrefix;
  std::uint64_t vendorTypeMask;
  std::string_view plugin;
  std::string_view vendor;
  std::string_view model;
};

/// The masks cover device families with and without a name, a camera whose plug-in name decides its type, and a mask of
/// no known family. A camera's hardware address is the vendor's prefix and the camera's number, from 1.
constexpr auto kVendors = std::to_array<VendorRow>({
    {"00:40:8C", 0x40, "Axis IPC", "North Optics", "NX-210 Überblick"},
    {"00:13:23", 0x4000, "ONVIF IPC", "Meridian", "MD-40"},
    {"02:5A:3C", 0, "R2 IPC", "Twobit", "TB-2"},
    {"00:1A:80", 0x40000, "Sony IPC", "Obscura", "OB-7 Größe M"},
    {"00:30:53", 0x20000000, "R4 IPC", "Fernblick", "FB-9"},
    {"00:1E:81", 0x100, "V1 IPC", "Palewell", "PW-1"},
    {"00:02:D1", 0x800000, "", "Unlisted", "京-1"},
});

/// How long after a camera was found its other events happen.
constexpr std::uint32_t kPictureAfterMs = 100;
constexpr std::uint32_t kChangedAfterMs = 1000;
constexpr std::uint32_t kGoneAfterMs = 2000;

std::string MacOf(std::string_view prefix, std::size_t index) {
  char text[24];
  std::snprintf(text, sizeof text, ":%02X:%02X:%02X", static_cast<unsigned>(index >> 16 & 0xFF),
                static_cast<unsigned>(index >> 8 & 0xFF), static_cast<unsigned>(index & 0xFF));
  return std::string(prefix) + text;
}

/// 10.second.x.y; the last part is never 0 or 255.
std::string IpOf(std::size_t second, std::size_t index) {
  constexpr std::size_t kPerNetwork = 254;
  const std::size_t network = index / kPerNetwork;
  char text[sizeof "10.255.255.255"];
  std::snprintf(text, sizeof text, "10.%u.%u.%u", static_cast<unsigned>((second + network / 256) & 0xFF),
                static_cast<unsigned>(network % 256), static_cast<unsigned>(index % kPerNetwork + 1));
  return text;
}

CameraRecord MakeRecord(std::size_t index, Random& random) {
  const VendorRow& vendor = kVendors[random.Below(kVendors.size())];
  CameraRecord record;
  record.ctt = static_cast<std::uint8_t>(random.Below(4));
  record.mac = MacOf(vendor.macPrefix, index + 1);
  record.nip = "0.0.0.0";
  record.ni2 = {"0.0.0.0"};
  record.ip = IpOf(0, index);
  record.subnetMask = "255.0.0.0";
  record.gateway = "10.255.255.254";
  record.dhcpMode = random.Below(2) == 0;
  record.icb = random.Below(2) == 0;
  record.gcb = random.Below(4) == 0;
  record.rbl = true;
  record.deviceFlags = random.Below(2) == 0 ? CameraRecord::kDeviceFlag17 : 0;
  record.vendorTypeMask = vendor.vendorTypeMask;
  record.pluginNames = {std::string(vendor.plugin)};
  record.vendorDisplayName = vendor.vendor;
  record.model = vendor.model;
  record.firmwareVersion = std::to_string(1 + random.Below(9)) + "." + std::to_string(random.Below(40));
  record.serialNumber = std::to_string(1'000'000 + index);
  return record;
}

void AppendEvents(const GenerateOrder& order, std::size_t index, std::size_t camera, Random& random,
                  std::vector<Event>& events) {
  const auto add = [&](FinderMessageType type, std::uint64_t atMs) -> Event& {
    Event& event = events.emplace_back();
    event.atMs = static_cast<std::uint32_t>(atMs);
    event.camera = camera;
    event.type = type;
    return event;
  };
  const std::uint64_t foundAtMs = std::uint64_t{order.withinMs} * index / order.count;
  add(fmtCameraKind0, foundAtMs);
  if (order.pictures) add(fmtPicture, foundAtMs + kPictureAfterMs);
  // Both numbers are drawn for every camera, so that one percentage does not change which cameras the other one
  // affects.
  const bool changes = random.Below(100) < order.changedPercent;
  const bool goes = random.Below(100) < order.gonePercent;
  if (changes) {
    // An address of another range, so that no other generated camera has it.
    add(fmtCameraKind1, foundAtMs + kChangedAfterMs).set.push_back([ip = IpOf(128, index)](CameraRecord& record) {
      record.ip = ip;
    });
  }
  if (goes) add(fmtCameraKind4, foundAtMs + kGoneAfterMs);
}

}  // namespace

void AppendGenerated(const GenerateOrder& order, Scenario& scenario) {
  scenario.cameras.reserve(scenario.cameras.size() + order.count);
  for (std::size_t index = 0; index < order.count; ++index) {
    Random random{scenario.seed, index};
    const std::size_t camera = scenario.cameras.size();
    scenario.cameras.push_back({"Generated " + std::to_string(index + 1),
                                {},
                                std::make_shared<const CameraRecord>(MakeRecord(index, random)),
                                true});
    AppendEvents(order, index, camera, random, scenario.events);
  }
}

}  // namespace simulator
