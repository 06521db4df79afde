#include "tools/network_change.h"

#include <gtest/gtest.h>

namespace tarnfind {
namespace {

TEST(NetworkChange, IsObjectedToWhereItCannotBeRight) {
  CameraSnapshot camera, other;
  camera.mac = "00:40:8C:00:00:01";
  camera.ip = "10.0.0.1";
  camera.subnetMask = "255.255.255.0";
  camera.gateway = "10.0.0.254";
  other.mac = "00:40:8C:00:00:02";
  other.ip = "10.0.0.2";
  other.model = "M";
  const struct {
    std::optional<std::string> NetworkChange::*setting;
    std::string value, objection;  ///< the first one
    bool mayBeForced = false;
  } rows[] = {
      {&NetworkChange::ip, "10.0.0.3", ""},
      {&NetworkChange::ip, "10.0.0.2", "10.0.0.2 belongs to 00:40:8C:00:00:02 M"},
      {&NetworkChange::ip, "10.0.0.0", "the address 10.0.0.0 is the address of the whole network"},
      {&NetworkChange::ip, "10.0.0.255", "the address 10.0.0.255 is the broadcast address of its network"},
      {&NetworkChange::ip, "255.255.255.255", "the address 255.255.255.255 is the broadcast address"},
      {&NetworkChange::ip, "0.0.0.1", "the address 0.0.0.1 is no address of a camera"},
      {&NetworkChange::ip, "127.0.0.1", "the address 127.0.0.1 means the camera itself"},
      {&NetworkChange::ip, "239.0.0.1", "the address 239.0.0.1 is a multicast address"},
      {&NetworkChange::ip, "240.0.0.1", "the address 240.0.0.1 is a reserved address"},
      {&NetworkChange::mask, "0.0.0.0", "\"0.0.0.0\" is no subnet mask; give one with --mask"},
      {&NetworkChange::mask, "255.255.255.254", "the mask 255.255.255.254 leaves no room for other hosts", true},
      {&NetworkChange::gateway, "0.0.0.0", ""},
      {&NetworkChange::gateway, "10.0.0.1", "the gateway is the camera's own address"},
      {&NetworkChange::gateway, "10.0.1.1",
       "the gateway 10.0.1.1 is outside the camera's network 10.0.0.1, mask 255.255.255.0", true},
      {&NetworkChange::user, "me", "no password was ever supplied for this camera; give one with the user name"},
  };
  camera.user = camera.password = kUnsetCredential;
  for (const auto& row : rows) {
    NetworkChange change;
    change.*row.setting = row.value;
    const std::vector<Objection> objections = Objections(camera, change, {camera, other});
    EXPECT_EQ(objections.empty() ? "" : objections[0].text, row.objection);
    EXPECT_EQ(!objections.empty() && objections[0].mayBeForced, row.mayBeForced) << row.objection;
  }
  camera.dhcp = true;
  NetworkChange change;
  change.ip = "10.0.0.3";
  EXPECT_EQ(Objections(camera, change, {camera})[0].text, "the camera takes its address from DHCP; give --static too");
}

}  // namespace
}  // namespace tarnfind
