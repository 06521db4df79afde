/// The smallest wizard: registers a callback, lists what has been found, asks about one address, waits for what
/// arrives, and lets go.
///
///     smallest_wizard [IP]        asks about 192.168.0.9 unless an address is given
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <thread>

#include "tarn/camera_finding.h"

using namespace Tarn::CameraFinding;

namespace {

/// Takes a text over. Anything but plain ASCII is shown as "?", to keep the example small.
std::string Take(BSTR text) {
  std::string result;
  for (const OLECHAR* unit = text; unit && *unit; ++unit)
    result += *unit >= OLESTR(' ') && *unit <= OLESTR('~') ? static_cast<char>(*unit) : '?';
  SysFreeString(text);
  return result;
}

void Print(const char* event, ICameraInfo& camera) {
  std::printf("%-8s %s  %-15s  %s\n", event, Take(camera.GetMacAddress()).c_str(), Take(camera.GetIpAddress()).c_str(),
              Take(camera.GetModel()).c_str());
}

/// Lives on the stack of the call that it is handed to, so it counts no references.
class Receiver final : public IFoundCameraReceiver {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  HRESULT CameraFound(ICameraInfo* camera) override {
    Print("listed", *camera);
    return S_OK;
  }
};

/// Called on worker threads. Lives as long as the finder, or a delivery that is under way, holds a reference.
class Callback final : public INewCameraDataCallback {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT PictureReceived(const uint8_t*, uint64_t byteCount, BSTR cameraText) override {
    std::printf("picture  %s, %llu bytes\n", Take(cameraText).c_str(), static_cast<unsigned long long>(byteCount));
    return S_OK;
  }
  HRESULT ValuesReceived(BSTR cameraText, const uint64_t*, uint64_t valueCount) override {
    std::printf("values   %s, %llu\n", Take(cameraText).c_str(), static_cast<unsigned long long>(valueCount));
    return S_OK;
  }
  HRESULT CameraInfoReceived(CameraEventKind eventKind, ICameraInfo* camera, CameraTypeCode) override {
    Print(eventKind == cekGone ? "gone" : "camera", *camera);
    return S_OK;
  }

 private:
  ~Callback() = default;
  std::atomic<ULONG> references_ = 1;
};

struct Releaser {
  void operator()(IUnknown* object) const { object->Release(); }
};

/// The library keeps a reference on the callback; without a channel to the server it takes none.
bool Install(ICameraFinder& finder) {
  auto* const callback = new Callback;
  finder.SetNewCameraDataCallback(callback);
  return callback->Release() > 0;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::string address = argc > 1 ? argv[1] : "192.168.0.9";
  ICameraFinder* made = nullptr;
  GetFindingInterface(nullptr, nullptr, &made);
  const std::unique_ptr<ICameraFinder, Releaser> finder(made);  // released where a call throws, too
  const bool installed = Install(*finder);
  if (installed) {
    Receiver receiver;
    finder->ListFoundCameras(&receiver);
    finder->RequestInfoByIp(std::basic_string<OLECHAR>(address.begin(), address.end()).c_str());
    std::this_thread::sleep_for(std::chrono::seconds(3));
  } else {
    std::fputs("The channel to the server cannot be opened.\n", stderr);
  }
  return installed ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
