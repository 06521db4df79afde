/// A wizard that looks at everything it is given and keeps a plain account of it.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "com/com_ptr.h"
#include "fuzz_target.h"
#include "tarn/camera_finding.h"

namespace fuzz {

/// Reads a text to its end and frees it; returns its length in units.
inline std::size_t TakeLength(BSTR text) {
  const std::size_t units = text ? std::char_traits<char16_t>::length(text) : 0;
  Check(units * sizeof(char16_t) == SysStringByteLen(text), "a text for the wizard ends at its first NUL");
  SysFreeString(text);
  return units;
}

using TextGetter = BSTR (Tarn::CameraFinding::ICameraInfo::*)();
inline constexpr TextGetter kTextGetters[] = {
    &Tarn::CameraFinding::ICameraInfo::GetModel,
    &Tarn::CameraFinding::ICameraInfo::GetIpAddress,
    &Tarn::CameraFinding::ICameraInfo::GetSubnetMask,
    &Tarn::CameraFinding::ICameraInfo::GetGateway,
    &Tarn::CameraFinding::ICameraInfo::GetFirmwareVersion,
    &Tarn::CameraFinding::ICameraInfo::GetModelName,
    &Tarn::CameraFinding::ICameraInfo::GetUserName,
    &Tarn::CameraFinding::ICameraInfo::GetPassword,
    &Tarn::CameraFinding::ICameraInfo::GetMacAddress,
    &Tarn::CameraFinding::ICameraInfo::GetPluginName,
    &Tarn::CameraFinding::ICameraInfo::GetVendorDisplayName,
};

/// Calls every getter; no exception crosses the interface.
inline void LookAt(Tarn::CameraFinding::ICameraInfo& camera) noexcept {
  for (const TextGetter getter : kTextGetters) TakeLength((camera.*getter)());
  Check(camera.GetCameraType() >= 0 && camera.GetCameraType() <= 26, "a camera type of the table");
  Check(camera.IsReserved() == 0, "reserved is false");
}

/// Allocates only in its constructor, so that no call to it meets the allocation that is made to fail.
class CountingWizard : public Tarn::CameraFinding::INewCameraDataCallback,
                       public Tarn::CameraFinding::IFoundCameraReceiver {
 public:
  explicit CountingWizard(std::size_t inputBytes) {
    lastPicture.reserve(inputBytes);
    lastValues.reserve(inputBytes / sizeof(std::uint64_t));
  }

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
    lastKind = eventKind;
    lastType = cameraType;
    lastCamera = Kestrel::ComPtr<Tarn::CameraFinding::ICameraInfo>(camera);
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
  std::uint32_t lastKind = 0;
  std::int32_t lastType = 0;
  Kestrel::ComPtr<Tarn::CameraFinding::ICameraInfo> lastCamera;
};

}  // namespace fuzz
