/// A wizard of another compiler: built for Microsoft's ABI from the installed headers alone, without a C or C++
/// library. It prints every getter of every camera that is listed, changes the first one, and prints what then arrives.
///
///     clang++ --target=x86_64-pc-windows-msvc -std=c++17 -O1 -ffreestanding -fno-exceptions -fno-rtti
///             -fno-stack-protector -DTARN_PLAIN_COM_TYPES -IPREFIX/include -c msvc_abi_wizard.cpp
///     lld-link /entry:start /nodefaultlib /subsystem:console msvc_abi_wizard.o
///              PREFIX/lib/libTarnCameraFindingNoThrow.dll.a libkernel32.a liboleaut32.a
#include "tarn/camera_finding_nothrow.h"

using namespace Tarn::CameraFinding;

extern "C" {
void* GetStdHandle(unsigned which);
int WriteFile(void* file, const void* bytes, unsigned count, unsigned* written, void* overlapped);
void Sleep(unsigned milliseconds);
[[noreturn]] void ExitProcess(unsigned code);
int _purecall() {
  ExitProcess(9);
}
}

namespace {

/// Collects a line and writes it in one call, because callbacks come on other threads.
class Line {
 public:
  Line() {}  // without it Line() would clear bytes_ with memset, which is in the C library
  Line& Text(const char* text) {
    while (*text) Put(*text++);
    return *this;
  }
  Line& Number(uint64_t number, unsigned base = 10) {
    if (number >= base) Number(number / base, base);
    Put("0123456789abcdef"[number % base]);
    return *this;
  }
  /// Takes the text over; what is not ASCII is written as a number.
  Line& Text(BSTR text) {
    const uint32_t units = SysStringByteLen(text) / sizeof(OLECHAR);
    for (uint32_t i = 0; i < units; ++i) {
      if (text[i] >= ' ' && text[i] < 0x7F) {
        Put(static_cast<char>(text[i]));
      } else {
        Text("\\").Number(text[i], 16);
      }
    }
    SysFreeString(text);
    return *this;
  }
  Line& operator|(BSTR text) { return Text("|").Text(text); }
  Line& operator|(uint64_t number) { return Text("|").Number(number); }
  ~Line() {
    Put('\n');
    unsigned written = 0;
    WriteFile(GetStdHandle(static_cast<unsigned>(-11)), bytes_, length_, &written, nullptr);
  }

 private:
  void Put(char byte) {
    if (length_ < sizeof bytes_) bytes_[length_++] = byte;
  }
  char bytes_[1024];
  unsigned length_ = 0;
};

void Print(const char* event, ICameraInfo& camera) {
  Line().Text(event) | camera.GetMacAddress() | camera.GetIpAddress() | camera.GetSubnetMask() | camera.GetGateway() |
      camera.GetModel() | camera.GetModelName() | camera.GetFirmwareVersion() | camera.GetUserName() |
      camera.GetPassword() | camera.IsDhcpEnabled() | camera.GetPluginName() | camera.HasDeviceFlag17() |
      camera.IsReserved() | camera.GetDeviceFlags() | camera.GetVendorTypeMask() | camera.GetIcb() | camera.GetGcb() |
      camera.GetCtt() | camera.GetVendorDisplayName() | static_cast<uint64_t>(camera.GetCameraType());
}

template <class Interface>
struct Counted : Interface {
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return __atomic_add_fetch(&references, 1, __ATOMIC_SEQ_CST); }
  ULONG Release() override { return __atomic_sub_fetch(&references, 1, __ATOMIC_SEQ_CST); }
  ULONG references = 0;
};

struct Receiver final : Counted<IFoundCameraReceiver> {
  HRESULT CameraFound(ICameraInfo* camera) override {
    Print("listed", *camera);
    if (!first) (first = camera)->AddRef();
    return E_FAIL;  // ignored
  }
  ICameraInfo* first = nullptr;
};

struct Callback final : Counted<INewCameraDataCallback> {
  HRESULT PictureReceived(const uint8_t* picture, uint64_t byteCount, BSTR cameraText) override {
    Line().Text("picture").Text(" ").Number(picture[0]) | byteCount | cameraText;
    return S_OK;
  }
  HRESULT ValuesReceived(BSTR cameraText, const uint64_t* values, uint64_t valueCount) override {
    Line().Text("values") | values[0] | values[valueCount - 1] | cameraText;
    return S_OK;
  }
  HRESULT CameraInfoReceived(CameraEventKind eventKind, ICameraInfo* camera, CameraTypeCode cameraType) override {
    Line().Text("arrived") | eventKind | static_cast<uint64_t>(cameraType) | camera->GetMacAddress() |
        camera->GetIpAddress();
    return S_OK;
  }
};

void Require(bool holds, const char* what) {
  if (holds) return;
  Line().Text(what);
  ExitProcess(1);
}

}  // namespace

extern "C" void start() {
  static Callback callback;
  static char error[256];
  Receiver receiver;
  ICameraFinder* finder = nullptr;
  Require(TarnNoThrow_GetFindingInterface(nullptr, nullptr, &finder, error, sizeof error) == S_OK, error);
  void* same = nullptr;
  Require(finder->QueryInterface(IID_ICameraFinder, &same) == S_OK && same == finder, "another interface");
  Require(finder->Release() == 1, "not one reference");
  Require(TarnNoThrow_SetNewCameraDataCallback(finder, &callback, error, sizeof error) == S_OK, error);
  Require(callback.references > 0, "no channel");
  Require(TarnNoThrow_ListFoundCameras(finder, &receiver, error, sizeof error) == S_OK, error);

  receiver.first->SetNetworkSettings(u"10.9.8.7", u"255.0.0.0", 0, u"10.0.0.1");
  receiver.first->SetCredentials(u"J\xFCrgen", nullptr);
  Print("changed", *receiver.first);
  Require(finder->SendNetworkCommandType1(receiver.first) == 1, "not sent");
  Require(receiver.first->Release() == 0, "the camera lives on");
  Sleep(2000);
  finder->Release();
  for (int i = 0; i < 500 && __atomic_load_n(&callback.references, __ATOMIC_SEQ_CST) > 0; ++i) Sleep(10);
  ExitProcess(callback.references == 0 ? 0 : 2);
}
