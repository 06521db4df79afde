/// What is printed of one camera.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/camera_details.h"
#include "tools/camera_table.h"
#include "tools/display_width.h"
#include "tools/json_objects.h"

namespace tarnfind {
namespace {

TEST(JsonText, EscapesControlCharactersAndMendsInvalidBytes) {
  EXPECT_EQ(JsonLine(Json("\x7F\xC2\x9B\xE2\x80\xAE\xF3\xA0\x80\xA0\xFF京")),
            "\"\\u007f\\u009b\\u202e\\udb40\\udc20�京\"\n");
}

TEST(Password, IsShownOnlyOnRequestAndNeverWhereThereIsNone) {
  FoundCamera found;
  CameraSnapshot& camera = found.camera;
  const auto shown = [&](bool showPasswords) {
    return JsonLine(CameraObject(camera, showPasswords)) + CameraDetails(found, showPasswords);
  };
  for (const std::string password : {"päss€7", ""}) {
    camera.user = "operator";
    camera.password = password;
    EXPECT_NE(shown(true).find("\"password\":\"" + password + "\""), std::string::npos);
    EXPECT_NE(shown(false).find("\"********\""), std::string::npos);
    EXPECT_EQ(shown(false).find("päss"), std::string::npos);
  }
  camera.user = camera.password = "&!*KVMR*9%";
  for (const bool showPasswords : {false, true}) {
    EXPECT_NE(shown(showPasswords).find(R"("user":null,"password":null)"), std::string::npos);
    EXPECT_NE(shown(showPasswords).find("Password      (unset)\n"), std::string::npos);
    EXPECT_EQ(shown(showPasswords).find("KVMR"), std::string::npos);
  }
}

TEST(CameraRow, FitsATerminalAndNarrowsTextsOnly) {
  FoundCamera found;
  found.typeKnown = true;
  found.type = 6;
  CameraSnapshot& camera = found.camera;
  camera.mac = "00:40:8C:00:00:07";
  camera.ip = "192.168.0.9";
  camera.dhcp = true;
  camera.model = camera.vendor = "京京京京京京京京京京京京京京";
  camera.plugin = "Axis IPC";
  for (int columns = 1; columns <= 200; ++columns) {
    SCOPED_TRACE(columns);
    const CameraTable table(columns);
    EXPECT_LT(DisplayWidth(table.Row({'+'}, found)), static_cast<std::size_t>(std::max(columns, 2)));
    EXPECT_LT(DisplayWidth(table.Header({' '})), static_cast<std::size_t>(std::max(columns, 2)));
  }
  EXPECT_EQ(CameraTable(80).Row({'+', true}, found),
            "+!00:40:8C:00:00:07 192.168.0.9     yes  京京…  京京京…         Axis IPC 6");
  camera.told = Told::kAssembled;
  EXPECT_EQ(CameraTable(141, true).Row({'-'}, found).substr(0, 90),
            "- 00:40:8C:00:00:07 192.168.0.9     ?    京京京京京京京…  ?                      ");
  camera.mac = std::string(200, 'x');
  EXPECT_EQ(CameraTable(std::nullopt).Row({}, found).substr(0, 216), std::string(200, 'x') + " 192.168.0.9    ");
}

}  // namespace
}  // namespace tarnfind
