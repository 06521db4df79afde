/// A wizard that notes what it is told, and what a camera's getters answer, one line each.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

using Bytes = std::vector<std::uint8_t>;

Bytes ReadSample(const std::string& name);
/// Every getter's answer: texts, bytes, numbers.
std::string Show(ICameraInfo& camera);

struct RecordingWizard : INewCameraDataCallback {
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override {
    const std::uint32_t left = --references;
    if (releaseThrows) throw left;
    return left;
  }
  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override {
    lastPicture = picture;
    return Note(Kestrel::TakeBstrAsUtf8(cameraText) + " picture " + std::to_string(byteCount));
  }
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) override {
    std::string line = Kestrel::TakeBstrAsUtf8(cameraText) + " values";
    for (std::uint64_t i = 0; i < valueCount; ++i) line += " " + std::to_string(values[i]);
    return Note(line);
  }
  HRESULT CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) override {
    return Note(Show(*camera) + " kind " + std::to_string(eventKind) + " type " + std::to_string(cameraType));
  }
  HRESULT Note(const std::string& line) {
    delivered += line;
    onCall();
    return S_OK;
  }

  std::string delivered;
  const std::uint8_t* lastPicture = nullptr;
  std::function<void()> onCall = [] {};  ///< runs inside every call, after it is noted
  std::atomic<std::uint32_t> references{0};
  bool releaseThrows = false;
};

}  // namespace Tarn::CameraFinding
