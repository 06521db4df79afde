/// Recorded messages, what must come of them, and a wizard that notes what comes in the same form.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "protocol/camera_record.h"
#include "tarn/camera_finding.h"
#include "valuelist/buffer.h"

namespace Tarn::CameraFinding {

using Bytes = std::vector<std::uint8_t>;

inline Bytes BytesOf(const Kestrel::Buffer& buffer) {
  return {buffer.GetBytes().begin(), buffer.GetBytes().end()};
}

Bytes ReadSample(const std::string& name);
const nlohmann::json& ExpectedOfSamples();

/// The camera as its getters show it, in the form of expected.json.
nlohmann::json CameraJson(ICameraInfo& camera);
nlohmann::json CameraJson(const CameraRecord& record);
/// Frees the text.
std::string TakeText(BSTR text);

struct RecordingWizard : INewCameraDataCallback {
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }
  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override;
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) override;
  HRESULT CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) override;

  nlohmann::json delivered = nlohmann::json::array();
  const std::uint8_t* lastPicture = nullptr;
  std::function<void()> onCall = [] {};  ///< runs inside every call, after it is noted
  std::atomic<std::uint32_t> references{0};
};

}  // namespace Tarn::CameraFinding
