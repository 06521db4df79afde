/// One whole operation of a finder that the export has made. The platform library is a fake that answers from memory.
#include <benchmark/benchmark.h>

#include "com/com_ptr.h"
#include "dbi/dbi.h"
#include "sample.h"
#include "tarn/camera_finding.h"

namespace {
sample::Bytes reply;
}

std::uint8_t TarnServer_CreateLiveStream(void*, Tarn::TTarnLiveStream** stream) {
  *stream = reinterpret_cast<Tarn::TTarnLiveStream*>(stream);
  return 1;
}
std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream*, const StreamOpenParameters*, std::uint64_t, void**, void**,
                                 std::uint64_t) {
  return 1;
}
std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream*) {
  return 1;
}
std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream*, std::uint32_t,
                                                   IGenericDataReceivedCallback*) {
  return 1;
}
std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream*, const void*, std::uint32_t, void** data,
                                                std::uint32_t* size) {
  *data = reply.data();
  *size = static_cast<std::uint32_t>(reply.size());
  return 1;
}
std::uint8_t TarnDBI_ReleaseReference(void*) {
  return 1;
}
void TarnLiveStream_Destroy(Tarn::TTarnLiveStream*) {}
std::uint8_t TarnDBIGetLastError(DBIErrorRecord*) {
  return 0;
}

namespace {

using namespace Tarn::CameraFinding;

class CountingReceiver : public IFoundCameraReceiver {
 public:
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  HRESULT CameraFound(ICameraInfo*) override {
    ++cameras;
    return S_OK;
  }
  std::int64_t cameras = 0;
};

void ListFoundCameras(benchmark::State& state) {
  reply = sample::Reply(static_cast<std::size_t>(state.range(0)));
  ICameraFinder* created = nullptr;
  GetFindingInterface(nullptr, nullptr, &created);
  const auto finder = Kestrel::ComPtr<ICameraFinder>::Attach(created);
  CountingReceiver receiver;
  for (auto _ : state) finder->ListFoundCameras(&receiver);
  sample::Require(receiver.cameras == state.iterations() * state.range(0), "every camera was handed over");
}
BENCHMARK(ListFoundCameras)->ArgName("cameras")->Arg(1)->Arg(100)->Arg(10000);

}  // namespace
