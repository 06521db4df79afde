#include <gtest/gtest.h>

#include <bit>

#include "protocol/camera_info.h"
#include "protocol/camera_type.h"
#include "protocol/samples.h"

namespace Tarn::CameraFinding {
namespace {

TEST(CameraType, OfAVendorMaskIsLookedUpByTheWholeValue) {
  const CameraTypeCode byBit[64] = {3,  5,  10, 4,  8,  9,  2,  7, 11, 12, 13, 14, 15, 16, 6, 17,
                                    18, 19, 1,  20, 21, 22, 23, 0, 0,  0,  0,  0,  0,  25, 26};
  for (unsigned bit = 0; bit < 64; ++bit) {
    SCOPED_TRACE(bit);
    const std::uint64_t mask = std::uint64_t{1} << bit;
    EXPECT_EQ(TypeFromVendorBit(mask), byBit[bit]);
    EXPECT_EQ(TypeFromVendorBit(mask | std::rotl(mask, 1)), 0);
  }
  EXPECT_EQ(TypeFromVendorBit(0), 0);
  EXPECT_EQ(TypeFromVendorBit(~std::uint64_t{0}), 24);
  EXPECT_EQ(TypeFromVendorBit(~std::uint64_t{0} - 1), 0);
}

TEST(CameraType, OfAPluginNameIsLookedUpExactly) {
  const struct {
    const char* name;
    CameraTypeCode type;
  } rows[] = {
      {"Sony IPC", 1},   {"Axis IPC", 2}, {"Summit IPC", 3},        {"R2 IPC", 4},   {"V1 IPC", 5},    {"ONVIF IPC", 6},
      {"R3 IPC", 8},     {"R4 IPC", 25},  {"ArecontVision IPC", 7}, {"axis IPC", 0}, {"Axis IPC ", 0}, {"Axis", 0},
      {"Marten IPC", 9}, {"", 0},         {"UNKNOWN", 0},           {"R5 IPC", 0},
  };
  for (const auto& row : rows) EXPECT_EQ(TypeFromPluginName(row.name), row.type) << row.name;
}

TEST(CameraInfo, OfADefaultRecordShowsTheDefaults) {
  EXPECT_EQ(CameraJson(CameraRecord()), nlohmann::json({{"type", 0},
                                                        {"mac", ""},
                                                        {"ip", ""},
                                                        {"subnetMask", ""},
                                                        {"gateway", ""},
                                                        {"model", ""},
                                                        {"firmware", ""},
                                                        {"user", "&!*KVMR*9%"},
                                                        {"password", "&!*KVMR*9%"},
                                                        {"dhcp", true},
                                                        {"plugin", "UNKNOWN"},
                                                        {"flag17", false},
                                                        {"deviceFlags", 0},
                                                        {"vendorTypeMask", "0x0"},
                                                        {"icb", false},
                                                        {"gcb", false},
                                                        {"ctt", 2},
                                                        {"vendor", ""}}));
}

TEST(CameraInfo, ShowsEachMemberThroughItsOwnGetter) {
  CameraRecord record(CameraLogin("user", "password", 9), CameraNetwork{"mac", "nip", {}, "ip", "mask", "gate", 2},
                      CameraProduct({"first", "second"}, "vendor", "model", "firmware", "serial"));
  record.gcb = true;
  record.vendorTypeMask = 0x40000;
  const auto camera = MakeCameraInfo(record);
  EXPECT_EQ(CameraJson(*camera.Get()), nlohmann::json({{"type", 1},
                                                       {"mac", "mac"},
                                                       {"ip", "ip"},
                                                       {"subnetMask", "mask"},
                                                       {"gateway", "gate"},
                                                       {"model", "model"},
                                                       {"firmware", "firmware"},
                                                       {"user", "user"},
                                                       {"password", "password"},
                                                       {"dhcp", false},
                                                       {"plugin", "first"},
                                                       {"flag17", true},
                                                       {"deviceFlags", 0xFFFFFFFF},
                                                       {"vendorTypeMask", "0x40000"},
                                                       {"icb", false},
                                                       {"gcb", true},
                                                       {"ctt", 9},
                                                       {"vendor", "vendor"}}));
  EXPECT_EQ(TakeText(camera->GetModelName()), "model");
  EXPECT_EQ(camera->IsReserved(), 0);
}

TEST(CameraInfo, KeepsWhatTheSettersAreGivenAndClearsForNull) {
  const auto camera = MakeCameraInfo(CameraRecord());
  camera->SetCredentials(u"p\u00E4\u20AC", nullptr);
  EXPECT_EQ(TakeText(camera->GetUserName()), "p\xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(TakeText(camera->GetPassword()), "");
  camera->SetNetworkSettings(u"10.0.0.1", u"255.0.0.0", 7, u"10.0.0.254");
  EXPECT_EQ(TakeText(camera->GetIpAddress()), "10.0.0.1");
  EXPECT_EQ(TakeText(camera->GetSubnetMask()), "255.0.0.0");
  EXPECT_EQ(TakeText(camera->GetGateway()), "10.0.0.254");
  EXPECT_EQ(camera->IsDhcpEnabled(), 0);
  camera->SetNetworkSettings(nullptr, nullptr, 1, nullptr);
  EXPECT_EQ(TakeText(camera->GetIpAddress()) + TakeText(camera->GetSubnetMask()) + TakeText(camera->GetGateway()), "");
  EXPECT_EQ(camera->IsDhcpEnabled(), 1);
}

}  // namespace
}  // namespace Tarn::CameraFinding
