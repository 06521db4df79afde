/// A whole conversation: the input chooses replies, blocks, calls, failures, detach and release. Its first byte, and
/// the steps of case 8, choose an allocation that fails.
#include <exception>
#include <optional>
#include <vector>

#include "com/com_ptr.h"
#include "counting_wizard.h"
#include "dbi/dbi.h"
#include "platform/threads.h"
#include "tarn/camera_finding.h"

using namespace Tarn::CameraFinding;

namespace {

/// The platform library of this conversation.
struct {
  fuzz::Bytes reply;
  IGenericDataReceivedCallback* receiver = nullptr;
  int streams = 0, replies = 0;
  bool failing = false, withRecord = false;
} fakeServer;

bool Succeeds() {
  return !fakeServer.failing;
}

}  // namespace

std::uint8_t TarnServer_CreateLiveStream(void*, Tarn::TTarnLiveStream** stream) {
  if (!Succeeds()) return 0;
  ++fakeServer.streams;
  *stream = reinterpret_cast<Tarn::TTarnLiveStream*>(&fakeServer);
  return 1;
}
std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream*, const StreamOpenParameters*, std::uint64_t, void**, void**,
                                 std::uint64_t) {
  return Succeeds();
}
std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream*) {
  return Succeeds();
}
std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream*, std::uint32_t mode,
                                                   IGenericDataReceivedCallback* callback) {
  if (mode == kUnregisterDataCallback) {
    if (fakeServer.receiver == callback) fakeServer.receiver = nullptr;
    callback->Release();
    return 1;
  }
  if (!Succeeds() && fakeServer.withRecord) return 0;
  callback->AddRef();
  fakeServer.receiver = callback;
  return 1;
}
std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream*, const void*, std::uint32_t, void** reply,
                                                std::uint32_t* replySize) {
  ++fakeServer.replies;
  // Each reply has a heap block of exactly its size, so that the address sanitizer sees a read beyond it.
  auto* const copy = static_cast<std::uint8_t*>(std::malloc(fakeServer.reply.size() + !fakeServer.reply.size()));
  std::copy(fakeServer.reply.begin(), fakeServer.reply.end(), copy);
  *reply = copy;
  *replySize = static_cast<std::uint32_t>(fakeServer.reply.size());
  return Succeeds();
}
std::uint8_t TarnDBI_ReleaseReference(void* reply) {
  std::free(reply);
  --fakeServer.replies;
  return Succeeds();
}
void TarnLiveStream_Destroy(Tarn::TTarnLiveStream*) {
  --fakeServer.streams;
}
std::uint8_t TarnDBIGetLastError(DBIErrorRecord* record) {
  if (!fakeServer.failing || !fakeServer.withRecord) return 0;
  *record = {1, 2, "Fault", nullptr, u"chosen by the input", ""};
  return 1;
}

namespace {

using Failing = std::optional<fakes::FailingAllocation>;

void Step(fuzz::Choices& choices, Kestrel::ComPtr<ICameraFinder>& finder, fuzz::CountingWizard& wizard,
          Failing& failing) {
  const std::uint8_t choice = choices.Byte();
  fakeServer.failing = choice & 0x40;
  fakeServer.withRecord = choice & 0x80;
  if (!finder) {
    ICameraFinder* created = nullptr;
    GetFindingInterface(&fakeServer, nullptr, &created);
    finder = Kestrel::ComPtr<ICameraFinder>::Attach(created);
  }
  switch (choice % 12) {
    case 0:
      return finder->SetNewCameraDataCallback(&wizard);
    case 1:
      return finder->SetNewCameraDataCallback(nullptr);
    case 2:
      return finder->ListFoundCameras(choices.Byte() & 1 ? &wizard : nullptr);
    case 3:
      return finder->RequestInfoByIp(u"10.0.0.5");
    case 4:
      return finder->SendMacAddress(u"00:40:8C:00:00:01");
    case 5:
      return finder->SendBareCommand();
    case 6:
      return finder.Reset();
    case 7:
      if (fakeServer.receiver) fakeServer.receiver->OnDetach();
      return;
    case 8: {
      const std::uint8_t behaviour = choices.Byte();
      wizard.throws = behaviour & 1;
      if (behaviour > 1) failing.emplace(behaviour / 2);
      return;
    }
    case 9:
      fakeServer.reply = choices.Take(choices.Byte() * std::size_t{16});
      return;
    default: {
      const std::uint32_t type = choices.Byte() % 10;
      const fuzz::Bytes block = choices.Take(choices.Byte() * std::size_t{8});
      if (fakeServer.receiver) fakeServer.receiver->OnGenericData(2, type, block.data(), block.size());
    }
  }
}

}  // namespace

FUZZ_TARGET(input) {
  // The worker starts before the first check and is kept, so that it does not count as left behind by an input.
  [[maybe_unused]] static const bool workerStarted = platform::RunOnWorkerAndWait([](void*) {}, nullptr);
  fuzz::Bounded(input, [&] {
    fuzz::CountingWizard wizard(input.size());
    fuzz::Choices choices(input);
    Failing failing(choices.Byte());
    fakeServer.reply = {};
    {
      Kestrel::ComPtr<ICameraFinder> finder;
      for (int steps = 0; steps < 64 && !choices.IsEmpty(); ++steps) {
        try {
          Step(choices, finder, wizard, failing);
        } catch (const std::exception&) {
        }
      }
      fakeServer.failing = false;
    }
    fuzz::Check(wizard.references == 0, "nobody holds the wizard");
    fuzz::Check(fakeServer.streams == 0 && fakeServer.replies == 0 && !fakeServer.receiver,
                "stream and replies are let go");
  });
}
