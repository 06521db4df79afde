/// The smallest wizard: shows for three seconds which cameras the server finds.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include "tarn/camera_finding.h"

using namespace Tarn::CameraFinding;

namespace {

/// Takes a text over. Anything but plain ASCII is shown as "?", to stay small.
std::string Take(BSTR text) {
  std::string result;
  for (const OLECHAR* unit = text; *unit; ++unit)
    result += *unit >= u' ' && *unit <= u'~' ? static_cast<char>(*unit) : '?';
  SysFreeString(text);
  return result;
}

/// Called on worker threads. Lives as long as the finder, or a delivery that is under way, holds a reference.
class Callback final : public INewCameraDataCallback {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return ++references_; }
  std::uint32_t Release() override {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT PictureReceived(const std::uint8_t*, std::uint64_t byteCount, BSTR cameraText) override {
    std::printf("picture  %s, %llu bytes\n", Take(cameraText).c_str(), static_cast<unsigned long long>(byteCount));
    return S_OK;
  }
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t*, std::uint64_t valueCount) override {
    std::printf("values   %s, %llu\n", Take(cameraText).c_str(), static_cast<unsigned long long>(valueCount));
    return S_OK;
  }
  HRESULT CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) override {
    std::printf("camera   %s %s, event %u, type %d\n", Take(camera->GetMacAddress()).c_str(),
                Take(camera->GetIpAddress()).c_str(), static_cast<unsigned>(eventKind), static_cast<int>(cameraType));
    return S_OK;
  }

 private:
  ~Callback() = default;
  std::atomic<std::uint32_t> references_ = 1;
};

}  // namespace

int main() try {
  ICameraFinder* finder = nullptr;
  GetFindingInterface(nullptr, nullptr, &finder);
  auto* const callback = new Callback;
  finder->SetNewCameraDataCallback(callback);
  callback->Release();
  std::this_thread::sleep_for(std::chrono::seconds(3));
  finder->Release();
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
