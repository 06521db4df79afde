#include "tools/network_change.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "tools/arguments.h"
#include "tools/mac_address.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

struct Setting {
  const char* label;
  std::string (*text)(const CameraSnapshot& camera, bool showPasswords);
  bool readBack;  ///< the server's list tells it
  bool fromDhcp;  ///< the network chooses it where DHCP is on
};
constexpr Setting kSettings[] = {
    {"IP", [](const CameraSnapshot& c, bool) { return c.ip; }, true, true},
    {"mask", [](const CameraSnapshot& c, bool) { return c.subnetMask; }, true, true},
    {"gateway", [](const CameraSnapshot& c, bool) { return c.gateway; }, true, true},
    {"DHCP", [](const CameraSnapshot& c, bool) { return std::string(c.dhcp ? "yes" : "no"); }, true, false},
    {"user", [](const CameraSnapshot& c, bool) { return ShownUser(c.user); }, true, false},
    {"password", [](const CameraSnapshot& c, bool show) { return ShownPassword(c.password, show); }, false, false},
};

/// An IPv4 address and the mask of its network.
struct Network {
  std::uint32_t address;
  std::uint32_t mask;
  bool Contains(std::uint32_t other) const { return (address & mask) == (other & mask); }
  bool IsFirst() const { return (address & ~mask) == 0; }
  bool IsLast() const { return (address & ~mask) == ~mask; }
};

constexpr std::uint32_t kSmallestMask = 0x80000000;
/// A network with a longer mask has no room for hosts beside its first and last address.
constexpr std::uint32_t kLargestMask = 0xFFFFFFFC;

std::string WrongHost(std::uint32_t address) {
  const std::uint32_t first = address >> 24;
  if (address == 0xFFFFFFFF) return "is the broadcast address";
  if (first == 0) return "is no address of a camera";
  if (first == 127) return "means the camera itself";
  if (first >= 224 && first < 240) return "is a multicast address";
  if (first >= 240) return "is a reserved address";
  return {};
}

void CheckAddress(const char* label, const std::string& text, const std::optional<Network>& network,
                  std::vector<Objection>& objections) {
  const auto address = ParseIpAddress(text);
  const auto object = [&](const std::string& what) {
    objections.push_back({fmt::format("{} {} {}", label, text, what)});
  };
  if (!address) return object("is no IPv4 address");
  if (const std::string wrong = WrongHost(*address); !wrong.empty()) return object(wrong);
  if (!network || network->mask > kLargestMask || !network->Contains(*address)) return;
  const Network own{*address, network->mask};
  if (own.IsFirst()) object("is the address of the whole network");
  if (own.IsLast()) object("is the broadcast address of its network");
}

void CheckMask(const std::string& text, std::vector<Objection>& objections) {
  const auto mask = ParseIpAddress(text);
  if (!mask || !CheckSubnetMask(text).empty() || *mask < kSmallestMask)
    objections.push_back({fmt::format("\"{}\" is no subnet mask; give one with --mask", Printable(text))});
  else if (*mask > kLargestMask)
    objections.push_back({fmt::format("the mask {} leaves no room for other hosts", text), true});
}

std::optional<Network> NetworkOf(const CameraSnapshot& camera) {
  const auto address = ParseIpAddress(camera.ip);
  const auto mask = ParseIpAddress(camera.subnetMask);
  return address && mask ? std::optional(Network{*address, *mask}) : std::nullopt;
}

bool HasGateway(const CameraSnapshot& camera) {
  return !camera.gateway.empty() && camera.gateway != kNoIpAddress;
}

void CheckGateway(const CameraSnapshot& wanted, std::vector<Objection>& objections) {
  if (!HasGateway(wanted)) return;
  const std::optional<Network> network = NetworkOf(wanted);
  CheckAddress("the gateway", wanted.gateway, network, objections);
  if (wanted.gateway == wanted.ip) objections.push_back({"the gateway is the camera's own address"});
  const auto gateway = ParseIpAddress(wanted.gateway);
  if (network && gateway && !network->Contains(*gateway))
    objections.push_back({fmt::format("the gateway {} is outside the camera's network {}, mask {}", wanted.gateway,
                                      wanted.ip, wanted.subnetMask),
                          true});
}

std::string KeyOf(const CameraSnapshot& camera) {
  return StandardMac(camera.mac).value_or(camera.mac);
}

template <class Counts>
std::vector<Difference> Compare(const CameraSnapshot& before, const CameraSnapshot& after, bool showPasswords,
                                Counts counts) {
  std::vector<Difference> differences;
  for (const Setting& setting : kSettings) {
    if (!counts(setting) || setting.text(before, true) == setting.text(after, true)) continue;
    differences.push_back(
        {setting.label, Printable(setting.text(before, showPasswords)), Printable(setting.text(after, showPasswords))});
  }
  return differences;
}

}  // namespace

std::string Contradiction(const NetworkChange& change) {
  if (change.IsEmpty())
    return "nothing to change; give --ip, --mask, --gateway, --dhcp, --static, --user or --password";
  if (change.dhcp == true && (change.ip || change.mask || change.gateway))
    return "with DHCP the network chooses the address; leave out --ip, --mask and --gateway, or --dhcp";
  return {};
}

CameraSnapshot Changed(const CameraSnapshot& camera, const NetworkChange& change) {
  CameraSnapshot result = camera;
  result.ip = change.ip.value_or(camera.ip);
  result.subnetMask = change.mask.value_or(camera.subnetMask);
  result.gateway = change.gateway.value_or(camera.gateway);
  result.dhcp = change.dhcp.value_or(camera.dhcp);
  result.user = change.user.value_or(camera.user);
  result.password = change.password.value_or(camera.password);
  return result;
}

std::vector<Objection> Objections(const CameraSnapshot& camera, const NetworkChange& change,
                                  const std::vector<CameraSnapshot>& listed) {
  std::vector<Objection> objections;
  const CameraSnapshot wanted = Changed(camera, change);
  const bool addresses = change.ip || change.mask || change.gateway || change.dhcp;
  if (addresses && !wanted.dhcp) {
    CheckMask(wanted.subnetMask, objections);
    CheckAddress("the address", wanted.ip, NetworkOf(wanted), objections);
    CheckGateway(wanted, objections);
    for (const CameraSnapshot& other : listed)
      if (other.ip == wanted.ip && KeyOf(other) != KeyOf(camera))
        objections.push_back({OneLine(fmt::format("{} belongs to {} {}", wanted.ip, other.mac, other.model))});
  } else if (change.ip || change.mask || change.gateway) {
    objections.push_back({"the camera takes its address from DHCP; give --static too"});
  }
  if (change.user && !change.password && camera.password == kUnsetCredential)
    objections.push_back({"no password was ever supplied for this camera; give one with the user name"});
  return objections;
}

std::vector<Difference> Differences(const CameraSnapshot& before, const CameraSnapshot& after, bool showPasswords) {
  return Compare(before, after, showPasswords, [](const Setting&) { return true; });
}

std::vector<Difference> Unapplied(const CameraSnapshot& sent, const CameraSnapshot& listed) {
  return Compare(sent, listed, false, [&](const Setting& s) { return s.readBack && !(s.fromDhcp && sent.dhcp); });
}

std::string JoinedDifferences(const std::vector<Difference>& differences) {
  std::vector<std::string> texts;
  for (const Difference& d : differences)
    texts.push_back(d.before == d.after ? fmt::format("another {}", d.label)  // both are hidden
                                        : fmt::format("{} {} -> {}", d.label, d.before, d.after));
  return fmt::format("{}", fmt::join(texts, ", "));
}

}  // namespace tarnfind
