/// One camera on its way from the getters to what is printed.
#include <gtest/gtest.h>

#include "tools/camera_details.h"
#include "tools/camera_table.h"
#include "tools/display_width.h"
#include "tools/json_objects.h"

namespace tarnfind {
namespace {

BSTR Text(const OLECHAR* text) {
  return SysAllocString(text);
}

/// Each getter answers something of its own, so that a mixed-up one shows.
class Camera final : public Tarn::CameraFinding::ICameraInfo {
 public:
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  std::int32_t GetCameraType() override { return 2; }
  BSTR GetModel() override { return Text(u"NX\x1b[2J"); }
  BSTR GetIpAddress() override { return Text(u"192.168.0.9"); }
  BSTR GetSubnetMask() override { return Text(u"255.255.0.0"); }
  BSTR GetGateway() override { return Text(u"192.168.0.1"); }
  BSTR GetFirmwareVersion() override { return Text(u"5.7.1"); }
  BSTR GetModelName() override { return Text(u"unused"); }
  BSTR GetMacAddress() override { return Text(u"00:40:8C:00:00:07"); }
  BSTR GetUserName() override { return Text(u"operator"); }
  BSTR GetPassword() override { return Text(u"päss€7"); }
  std::uint8_t IsDhcpEnabled() override { return 1; }
  BSTR GetPluginName() override { return Text(u"Axis IPC"); }
  std::uint8_t HasDeviceFlag17() override { return 0; }
  std::uint8_t IsReserved() override { return 0; }
  void SetCredentials(const OLECHAR*, const OLECHAR*) override {}
  void SetNetworkSettings(const OLECHAR*, const OLECHAR*, std::uint8_t, const OLECHAR*) override {}
  std::uint32_t GetDeviceFlags() override { return 0xFFFFFFFF; }
  std::uint64_t GetVendorTypeMask() override { return 0xFFFFFFFFFFFFFFFF; }
  std::uint8_t GetIcb() override { return 1; }
  std::uint8_t GetGcb() override { return 0; }
  std::uint8_t GetCtt() override { return 255; }
  BSTR GetVendorDisplayName() override { return Text(u"北 \xD800"); }
};

CameraSnapshot Snapshot() {
  Camera camera;
  return SnapshotOf(camera);
}

TEST(CameraAsJson, HoldsEveryGetterInAFixedOrder) {
  EXPECT_EQ(JsonLine(CameraObject(Snapshot(), true)),
            R"({"type":2,"mac":"00:40:8C:00:00:07","ip":"192.168.0.9","subnetMask":"255.255.0.0",)"
            R"("gateway":"192.168.0.1","model":"NX\u001b[2J","firmware":"5.7.1","user":"operator",)"
            R"("password":"päss€7","dhcp":true,"plugin":"Axis IPC","flag17":false,"deviceFlags":4294967295,)"
            R"("vendorTypeMask":"0xffffffffffffffff","icb":true,"gcb":false,"ctt":255,"vendor":"北 �"})"
            "\n");
}

TEST(JsonText, EscapesControlCharactersAndMendsInvalidBytes) {
  EXPECT_EQ(JsonLine(Json("\x7F\xC2\x9B\xE2\x80\xAE\xFF京")), "\"\\u007f\\u009b\\u202e�京\"\n");
}

TEST(CameraForAReader, ShowsItsPasswordOnlyOnRequest) {
  CameraSnapshot camera = Snapshot();
  const auto shown = [&](bool showPasswords) {
    return JsonLine(CameraObject(camera, showPasswords)) + CameraDetails(camera, 2, showPasswords);
  };
  EXPECT_NE(shown(true).find("päss€7"), std::string::npos);
  EXPECT_EQ(shown(false).find("päss"), std::string::npos);
  EXPECT_NE(shown(false).find("********"), std::string::npos);
  camera.password = "";
  EXPECT_NE(shown(false).find("\"********\""), std::string::npos);

  camera.user = camera.password = "&!*KVMR*9%";
  for (const bool showPasswords : {false, true}) {
    EXPECT_NE(shown(showPasswords).find(R"("user":null,"password":null)"), std::string::npos);
    EXPECT_NE(shown(showPasswords).find("Password      (unset)\n"), std::string::npos);
    EXPECT_EQ(shown(showPasswords).find("KVMR"), std::string::npos);
  }
}

TEST(CameraDetails, NamesTypesThatHaveAName) {
  EXPECT_NE(CameraDetails(Snapshot(), 25, false).find("Type          25 (R4 IPC)\n"), std::string::npos);
  EXPECT_NE(CameraDetails(Snapshot(), 24, false).find("Type          24\n"), std::string::npos);
}

TEST(CameraRow, OffATerminalIsWhole) {
  EXPECT_EQ(CameraTable(std::nullopt).Row('+', Snapshot(), 6),
            "+ 00:40:8C:00:00:07 192.168.0.9     yes  北 �             NX�[2J                 5.7.1      "
            "Axis IPC          6");
  CameraSnapshot camera = Snapshot();
  camera.mac = std::string(200, 'x');
  EXPECT_EQ(CameraTable(std::nullopt).Row(0, camera, 6).substr(0, 216), std::string(200, 'x') + " 192.168.0.9    ");
}

TEST(CameraRow, OnATerminalFitsItsWidthAndNarrowsTextsOnly) {
  CameraSnapshot camera = Snapshot();
  camera.model = camera.vendor = "京京京京京京京京京京京京京京";
  for (int columns = 1; columns <= 200; ++columns) {
    SCOPED_TRACE(columns);
    const CameraTable table(columns);
    EXPECT_LT(DisplayWidth(table.Row('+', camera, 6)), static_cast<std::size_t>(std::max(columns, 2)));
    EXPECT_LT(DisplayWidth(table.Header(' ')), static_cast<std::size_t>(std::max(columns, 2)));
  }
  EXPECT_EQ(CameraTable(80).Row('+', camera, 6),
            "+ 00:40:8C:00:00:07 192.168.0.9     yes  京京…  京京京…  5.7.1  Axis IPC 6");
}

}  // namespace
}  // namespace tarnfind
