#include "protocol/recording_wizard.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Tarn::CameraFinding {

Bytes ReadSample(const std::string& name) {
  std::ifstream file(TARN_TEST_DATA "/" + name, std::ios::binary);
  if (!file) throw std::runtime_error("no sample " + name);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

std::string Show(ICameraInfo& camera) {
  std::string shown;
  for (const auto text : {&ICameraInfo::GetModel, &ICameraInfo::GetIpAddress, &ICameraInfo::GetSubnetMask,
                          &ICameraInfo::GetGateway, &ICameraInfo::GetFirmwareVersion, &ICameraInfo::GetModelName,
                          &ICameraInfo::GetMacAddress, &ICameraInfo::GetUserName, &ICameraInfo::GetPassword,
                          &ICameraInfo::GetPluginName, &ICameraInfo::GetVendorDisplayName})
    shown += Kestrel::TakeBstrAsUtf8((camera.*text)()) + "|";
  for (const auto byte : {&ICameraInfo::IsDhcpEnabled, &ICameraInfo::HasDeviceFlag17, &ICameraInfo::IsReserved,
                          &ICameraInfo::GetIcb, &ICameraInfo::GetGcb, &ICameraInfo::GetCtt})
    shown += std::to_string((camera.*byte)());
  return shown + "|" + std::to_string(camera.GetCameraType()) + "|" + std::to_string(camera.GetDeviceFlags()) + "|" +
         std::to_string(camera.GetVendorTypeMask());
}

}  // namespace Tarn::CameraFinding
