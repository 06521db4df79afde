/// The built library, loaded as a wizard loads it, and what a wizard brings along.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "com/com_ptr.h"
#include "platform/modules.h"
#include "tarn/camera_finding.h"
#include "wizard/scripted_dbi.h"

namespace wizard {

using Kestrel::ComPtr;
using nlohmann::json;
using scripted::Bytes;
using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::ICameraInfo;
using Tarn::CameraFinding::IFoundCameraReceiver;
using Tarn::CameraFinding::INewCameraDataCallback;

/// What a test passes as server handle and channel argument.
inline void* const kServer = reinterpret_cast<void*>(std::uintptr_t{0x5E4E4});
inline void* const kChannel = reinterpret_cast<void*>(std::uintptr_t{0xC4A22E1});

ComPtr<ICameraFinder> MakeFinderBy(decltype(&GetFindingInterface) getFindingInterface, void* server = kServer);

/// Loads the library; unloads it at the end of the scope.
class FinderLibrary {
 public:
  FinderLibrary();
  ~FinderLibrary() { platform::FreeLibrary(module_); }
  FinderLibrary(const FinderLibrary&) = delete;
  FinderLibrary& operator=(const FinderLibrary&) = delete;
  static bool IsLoaded();

  decltype(&GetFindingInterface) getFindingInterface = nullptr;
  ComPtr<ICameraFinder> MakeFinder(void* server = kServer) const { return MakeFinderBy(getFindingInterface, server); }

 private:
  platform::ModuleHandle module_;
};

/// Reference counting of an object on the test's own side; it must outlive its references.
template <class Interface>
class OwnedByTest : public Interface {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  std::atomic<std::uint32_t> references{0};
};

/// Frees the text.
std::string TakeUtf8(BSTR text);
/// Every getter of a camera, under the names of expected.json.
json CameraAsJson(ICameraInfo& camera);

/// A camera that answers what expected.json says, null where that says nothing, and notes its getters.
class JsonCamera : public OwnedByTest<ICameraInfo> {
 public:
  explicit JsonCamera(json camera) : camera_(std::move(camera)) {}

  std::int32_t GetCameraType() override { return camera_.value("type", 0); }
  BSTR GetModel() override { return Text("model"); }
  BSTR GetIpAddress() override { return Text("ip"); }
  BSTR GetSubnetMask() override { return Text("subnetMask"); }
  BSTR GetGateway() override { return Text("gateway"); }
  BSTR GetFirmwareVersion() override { return Text("firmware"); }
  BSTR GetModelName() override { return Text("model"); }
  BSTR GetMacAddress() override { return Text("mac"); }
  BSTR GetUserName() override { return Text("user"); }
  BSTR GetPassword() override { return Text("password"); }
  std::uint8_t IsDhcpEnabled() override {
    asked += "dhcp ";
    return camera_.value("dhcp", false);
  }
  BSTR GetPluginName() override { return Text("plugin"); }
  std::uint8_t HasDeviceFlag17() override { return 1; }
  std::uint8_t IsReserved() override { return 0; }
  void SetCredentials(const OLECHAR*, const OLECHAR*) override {}
  void SetNetworkSettings(const OLECHAR*, const OLECHAR*, std::uint8_t, const OLECHAR*) override {}
  std::uint32_t GetDeviceFlags() override { return camera_.value("deviceFlags", 0U); }
  std::uint64_t GetVendorTypeMask() override { return 0; }
  std::uint8_t GetIcb() override { return 0; }
  std::uint8_t GetGcb() override { return 0; }
  std::uint8_t GetCtt() override { return 0; }
  BSTR GetVendorDisplayName() override { return Text("vendor"); }

  std::string asked;
  bool throws = false;

 private:
  BSTR Text(const char* member);
  json camera_;
};

/// Notes what arrives as expected.json says it.
class RecordingCallback : public OwnedByTest<INewCameraDataCallback> {
 public:
  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override;
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) override;
  HRESULT CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) override;

  const json& Delivered() const { return delivered_; }
  Bytes lastPicture;

 private:
  json delivered_ = json::array();
};

/// Counts what arrives, on any thread, and keeps nothing of it.
class CountingCallback : public OwnedByTest<INewCameraDataCallback> {
 public:
  HRESULT PictureReceived(const std::uint8_t*, std::uint64_t, BSTR text) override { return Took(text); }
  HRESULT ValuesReceived(BSTR text, const std::uint64_t*, std::uint64_t) override { return Took(text); }
  HRESULT CameraInfoReceived(std::uint32_t, ICameraInfo* camera, std::int32_t) override {
    return Took(camera->GetMacAddress());
  }

  std::atomic<int> count{0};
  std::function<void()> inside;  ///< runs within the call, where set

 private:
  HRESULT Took(BSTR text);
};

/// Notes its cameras, and keeps them by references of its own.
struct RecordingReceiver : OwnedByTest<IFoundCameraReceiver> {
  HRESULT CameraFound(ICameraInfo* camera) override {
    cameras.push_back(CameraAsJson(*camera));
    kept.emplace_back(camera);
    return E_POINTER;  // ignored
  }
  json cameras = json::array();
  std::vector<ComPtr<ICameraInfo>> kept;
};

/// Resident memory and threads of this process where the system tells, else zeroes.
struct ProcessUse {
  std::int64_t residentBytes = 0;
  std::ptrdiff_t threads = 0;
};
ProcessUse GetProcessUse();

/// One file of tests/data.
Bytes ReadSample(const std::string& name);
/// A whole block of a message type, 1 to 8.
Bytes SampleOfType(std::uint32_t messageType);
const json& ExpectedOfSamples();

/// Starts each test with a forgetful platform library, and checks that nothing is left open at its end.
class WizardTest : public testing::Test {
 protected:
  WizardTest() { dbi.Reset(); }
  void TearDown() override {
    EXPECT_EQ(dbi.OpenReplies(), 0);
    EXPECT_EQ(dbi.Locked()->openStreams, 0);
  }
  scripted::Dbi& dbi = *GetScriptedDbi();
};

}  // namespace wizard
