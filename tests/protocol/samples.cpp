#include "protocol/samples.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "com/bstr.h"
#include "protocol/camera_info.h"

namespace Tarn::CameraFinding {

Bytes ReadSample(const std::string& name) {
  std::ifstream file(std::filesystem::path(TARN_TEST_DATA) / name, std::ios::binary);
  if (!file) throw std::runtime_error("no sample " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

const nlohmann::json& ExpectedOfSamples() {
  static const auto expected = nlohmann::json::parse(ReadSample("expected.json"));
  return expected;
}

std::string TakeText(BSTR text) {
  return Kestrel::TakeBstrAsUtf8(text);
}

nlohmann::json CameraJson(ICameraInfo& camera) {
  char mask[19];
  std::snprintf(mask, sizeof mask, "0x%llX", static_cast<unsigned long long>(camera.GetVendorTypeMask()));
  return {
      {"type", camera.GetCameraType()},
      {"mac", TakeText(camera.GetMacAddress())},
      {"ip", TakeText(camera.GetIpAddress())},
      {"subnetMask", TakeText(camera.GetSubnetMask())},
      {"gateway", TakeText(camera.GetGateway())},
      {"model", TakeText(camera.GetModel())},
      {"firmware", TakeText(camera.GetFirmwareVersion())},
      {"user", TakeText(camera.GetUserName())},
      {"password", TakeText(camera.GetPassword())},
      {"dhcp", camera.IsDhcpEnabled() == 1},
      {"plugin", TakeText(camera.GetPluginName())},
      {"flag17", camera.HasDeviceFlag17() == 1},
      {"deviceFlags", camera.GetDeviceFlags()},
      {"vendorTypeMask", mask},
      {"icb", camera.GetIcb() == 1},
      {"gcb", camera.GetGcb() == 1},
      {"ctt", camera.GetCtt()},
      {"vendor", TakeText(camera.GetVendorDisplayName())},
  };
}

nlohmann::json CameraJson(const CameraRecord& record) {
  return CameraJson(*MakeCameraInfo(record).Get());
}

HRESULT RecordingWizard::PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) {
  lastPicture = picture;
  delivered.push_back({{"picture", TakeText(cameraText)}, {"bytes", byteCount}});
  onCall();
  return S_OK;
}

HRESULT RecordingWizard::ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) {
  auto numbers = nlohmann::json::array();
  for (std::uint64_t i = 0; i < valueCount; ++i) numbers.push_back(std::to_string(values[i]));
  delivered.push_back({{"values", TakeText(cameraText)}, {"numbers", std::move(numbers)}});
  onCall();
  return S_OK;
}

HRESULT RecordingWizard::CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) {
  delivered.push_back({{"camera", CameraJson(*camera)}, {"kind", eventKind}, {"type", cameraType}});
  onCall();
  return S_OK;
}

}  // namespace Tarn::CameraFinding
