#include "wizard/finder_library.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "base/text_conversion.h"

namespace wizard {
namespace {

/// The library that was built, or another one in its place.
std::u16string LibraryFile() {
  const char* const other = std::getenv("TARN_LIBRARY_UNDER_TEST");
  return other ? Kestrel::Utf8ToWide(other) : TARN_LIBRARY_FILE;
}

}  // namespace

FinderLibrary::FinderLibrary() : module_(platform::LoadLibraryExW(LibraryFile().c_str(), 0)) {
  if (!module_) throw std::runtime_error("the library cannot be loaded");
  getFindingInterface =
      reinterpret_cast<decltype(getFindingInterface)>(platform::GetProcAddress(module_, "GetFindingInterface"));
}

bool FinderLibrary::IsLoaded() {
  return platform::GetModuleHandleW(LibraryFile().c_str()) != nullptr;
}

ComPtr<ICameraFinder> MakeFinderBy(decltype(&GetFindingInterface) getFindingInterface, void* server) {
  ICameraFinder* finder = nullptr;
  getFindingInterface(server, kChannel, &finder);
  return ComPtr<ICameraFinder>::Attach(finder);
}

std::string TakeUtf8(BSTR text) {
  std::string utf8 = text ? Kestrel::WideToUtf8(text) : "(null)";
  SysFreeString(text);
  return utf8;
}

json CameraAsJson(ICameraInfo& camera) {
  char mask[19];
  std::snprintf(mask, sizeof mask, "0x%llX", static_cast<unsigned long long>(camera.GetVendorTypeMask()));
  EXPECT_EQ(TakeUtf8(camera.GetModel()), TakeUtf8(camera.GetModelName()));
  EXPECT_EQ(camera.IsReserved(), 0);
  return {{"type", camera.GetCameraType()},
          {"mac", TakeUtf8(camera.GetMacAddress())},
          {"ip", TakeUtf8(camera.GetIpAddress())},
          {"subnetMask", TakeUtf8(camera.GetSubnetMask())},
          {"gateway", TakeUtf8(camera.GetGateway())},
          {"model", TakeUtf8(camera.GetModel())},
          {"firmware", TakeUtf8(camera.GetFirmwareVersion())},
          {"user", TakeUtf8(camera.GetUserName())},
          {"password", TakeUtf8(camera.GetPassword())},
          {"dhcp", camera.IsDhcpEnabled() == 1},
          {"plugin", TakeUtf8(camera.GetPluginName())},
          {"flag17", camera.HasDeviceFlag17() == 1},
          {"deviceFlags", camera.GetDeviceFlags()},
          {"vendorTypeMask", mask},
          {"icb", camera.GetIcb() == 1},
          {"gcb", camera.GetGcb() == 1},
          {"ctt", camera.GetCtt()},
          {"vendor", TakeUtf8(camera.GetVendorDisplayName())}};
}

BSTR JsonCamera::Text(const char* member) {
  asked += std::string(member) + " ";
  if (throws) throw std::runtime_error("the wizard's camera");
  if (!camera_.contains(member)) return nullptr;
  return SysAllocString(Kestrel::Utf8ToWide(camera_[member].get<std::string>()).c_str());
}

HRESULT RecordingCallback::PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) {
  lastPicture.assign(picture, picture + byteCount);
  delivered_.push_back({{"picture", TakeUtf8(cameraText)}, {"bytes", byteCount}});
  return S_OK;
}

HRESULT RecordingCallback::ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) {
  json numbers = json::array();
  for (std::uint64_t i = 0; i < valueCount; ++i) numbers.push_back(std::to_string(values[i]));
  delivered_.push_back({{"values", TakeUtf8(cameraText)}, {"numbers", numbers}});
  return S_OK;
}

HRESULT RecordingCallback::CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) {
  delivered_.push_back({{"camera", CameraAsJson(*camera)}, {"kind", eventKind}, {"type", cameraType}});
  return S_OK;
}

HRESULT CountingCallback::Took(BSTR text) {
  SysFreeString(text);
  ++count;
  if (inside) inside();
  return S_OK;
}

ProcessUse GetProcessUse() {
  ProcessUse use;
  std::ifstream statm("/proc/self/statm");
  std::int64_t total = 0, residentPages = 0;
  if (statm >> total >> residentPages) use.residentBytes = residentPages * 4096;
  std::error_code none;
  const std::filesystem::directory_iterator tasks("/proc/self/task", none), end;
  if (!none) use.threads = std::distance(tasks, end);
  return use;
}

Bytes ReadSample(const std::string& name) {
  std::ifstream file(TARN_TEST_DATA "/" + name, std::ios::binary);
  if (!file) throw std::runtime_error("no sample " + name);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes SampleOfType(std::uint32_t messageType) {
  constexpr const char* kKinds[] = {"picture", "values", "camera", "camera", "camera", "camera", "assembled", "gone"};
  return ReadSample("block-" + std::to_string(messageType) + "-" + kKinds[messageType - 1] + ".bin");
}

const json& ExpectedOfSamples() {
  static const json expected = json::parse(std::ifstream(TARN_TEST_DATA "/expected.json"));
  return expected;
}

}  // namespace wizard
