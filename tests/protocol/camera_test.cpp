#include <gtest/gtest.h>

#include <bit>
#include <utility>

#include "protocol/camera_info.h"
#include "protocol/camera_type.h"
#include "protocol/recording_wizard.h"

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
  } rows[] = {{"Sony IPC", 1},   {"Axis IPC", 2}, {"Summit IPC", 3},        {"R2 IPC", 4},   {"V1 IPC", 5},
              {"ONVIF IPC", 6},  {"R3 IPC", 8},   {"ArecontVision IPC", 7}, {"R4 IPC", 25},  {"Axis IPC ", 0},
              {"Marten IPC", 9}, {"R5 IPC", 0},   {"UNKNOWN", 0},           {"axis IPC", 0}, {"", 0}};
  for (const auto& row : rows) EXPECT_EQ(TypeFromPluginName(row.name), row.type) << row.name;
}

TEST(CameraInfo, ShowsEachMemberThroughItsOwnGetterAndKeepsWhatTheSettersAreGiven) {
  EXPECT_EQ(Show(*MakeCameraInfo(CameraRecord()).Get()), "|||||||&!*KVMR*9%|&!*KVMR*9%|UNKNOWN||100002|0|0|0");
  CameraRecord record(CameraLogin("user", "password", 9), CameraNetwork{"mac", "nip", {}, "ip", "mask", "gate", 2},
                      CameraProduct({"first", "second"}, "vendor", "model", "firmware", "serial"));
  record.gcb = true;
  record.vendorTypeMask = 0x40000;
  const auto camera = MakeCameraInfo(std::move(record));
  const std::string numbers = "|1|4294967295|262144";
  EXPECT_EQ(Show(*camera.Get()), "model|ip|mask|gate|firmware|model|mac|user|password|first|vendor|010019" + numbers);
  camera->SetCredentials(u"p\u00E4\u20AC", nullptr);
  camera->SetNetworkSettings(u"10.0.0.1", nullptr, 7, u"10.0.0.2");
  EXPECT_EQ(Show(*camera.Get()),
            "model|10.0.0.1||10.0.0.2|firmware|model|mac|p\xC3\xA4\xE2\x82\xAC||first|vendor|010019" + numbers);
  camera->SetNetworkSettings(nullptr, u"255.0.0.0", 1, nullptr);
  EXPECT_EQ(Show(*camera.Get()),
            "model||255.0.0.0||firmware|model|mac|p\xC3\xA4\xE2\x82\xAC||first|vendor|110019" + numbers);
}

}  // namespace
}  // namespace Tarn::CameraFinding
