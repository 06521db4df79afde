/// A wizard that looks at everything it is given and keeps a plain account of it.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "fuzz_target.h"
#include "tarn/camera_finding.h"

namespace fuzz {

/// Reads a text to its end and frees it; its length in units.
inline std::size_t TakeLength(BSTR text) {
  const std::size_t units = text ? std::char_traits<char16_t>::length(text) : 0;
  Check(units * sizeof(char16_t) == SysStringByteLen(text), "a text for the wizard ends at its first NUL");
  SysFreeString(text);
  return units;
}

/// Calls every getter.
inline void LookAt(Tarn::CameraFinding::ICameraInfo& camera) {
  using Tarn::CameraFinding::ICameraInfo;
  for (const auto getter : {&ICameraInfo::GetModel, &ICameraInfo::GetIpAddress, &ICameraInfo::GetSubnetMask,
                            &ICameraInfo::GetGateway, &ICameraInfo::GetFirmwareVersion, &ICameraInfo::GetModelName,
                            &ICameraInfo::GetUserName, &ICameraInfo::GetPassword, &ICameraInfo::GetMacAddress,
                            &ICameraInfo::GetPluginName, &ICameraInfo::GetVendorDisplayName})
    TakeLength((camera.*getter)());
  Check(camera.GetCameraType() >= 0 && camera.GetCameraType() <= 26, "a camera type of the table");
  Check(camera.IsReserved() == 0, "reserved is false");
}

class CountingWizard : public Tarn::CameraFinding::INewCameraDataCallback,
                       public Tarn::CameraFinding::IFoundCameraReceiver {
 public:
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override {
    lastPicture.assign(picture, picture + byteCount);
    TakeLength(cameraText);
    ++pictures;
    return S_OK;
  }
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) override {
    lastValues.assign(values, values + valueCount);
    TakeLength(cameraText);
    ++valueLists;
    if (throws) throw 1;
    return S_OK;
  }
  HRESULT CameraInfoReceived(std::uint32_t eventKind, Tarn::CameraFinding::ICameraInfo* camera,
                             std::int32_t cameraType) override {
    Check(eventKind <= 4 && cameraType >= 0 && cameraType <= 26, "kinds and types of the tables");
    LookAt(*camera);
    ++cameras;
    if (throws) throw 2;
    return S_OK;
  }
  HRESULT CameraFound(Tarn::CameraFinding::ICameraInfo* camera) override {
    LookAt(*camera);
    ++found;
    return S_OK;
  }

  std::atomic<std::uint32_t> references{0};
  int pictures = 0, valueLists = 0, cameras = 0, found = 0;
  bool throws = false;
  std::vector<std::uint8_t> lastPicture;
  std::vector<std::uint64_t> lastValues;
};

}  // namespace fuzz
