#include <span>

#include "dbi/dbi.h"
#include "simulator/last_error.h"
#include "simulator/library.h"
#include "simulator/scenario_reader.h"

namespace {

using simulator::Function;
using simulator::Library;
using simulator::Outcome;
using simulator::Refused;

void RememberInternalFailure(const char* description) noexcept {
  simulator::Failure failure;
  try {
    failure.description = description;
  } catch (...) {  // no memory for the text: the description stays empty
  }
  simulator::RememberFailure(failure);
}

/// The boundary: counts the call, applies the scenario's faults, and turns exceptions into the thread's last failure.
template <class Body>
std::uint8_t Answer(Function function, Body body) noexcept {
  try {
    if (Library::Get().EnterCall(function) != Outcome::kAsUsual) return 0;
    body();
    return 1;
  } catch (const Refused& refused) {
    simulator::RememberFailure(refused.GetFailure());
  } catch (const std::exception& exception) {
    RememberInternalFailure(exception.what());
  } catch (...) {
    RememberInternalFailure("The simulator failed");
  }
  return 0;
}

void Require(bool condition, const char* description) {
  if (!condition) throw Refused(simulator::kBadArgument, description);
}

/// A mistake in the scenario becomes the description of the call's failure.
bool LoadScenario() noexcept {
  try {
    Library::Get().LoadScenario();
    return true;
  } catch (const simulator::ScenarioMistake& mistake) {
    simulator::RememberFailure(Refused(simulator::kScenarioMistake, mistake.what()).GetFailure());
  } catch (const std::exception& exception) {
    RememberInternalFailure(exception.what());
  }
  return false;
}

}  // namespace

extern "C" {

std::uint8_t TarnServer_CreateLiveStream(void*, Tarn::TTarnLiveStream** stream) {
  if (!LoadScenario()) return 0;
  return Answer(Function::kCreateLiveStream, [&] {
    Require(stream, "The handle has nowhere to go");
    *stream = Library::Get().CreateStream();
  });
}

std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream* stream, const StreamOpenParameters* parameters, std::uint64_t,
                                 void** output1, void** output2, std::uint64_t) {
  return Answer(Function::kOpen, [&] {
    Library::Get().FindStream(stream);
    Require(parameters && parameters->sizeInBytes == sizeof *parameters, "The parameters have another size");
    if (output1) *output1 = nullptr;
    if (output2) *output2 = nullptr;
  });
}

std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream* stream) {
  return Answer(Function::kStart, [&] { Library::Get().FindStream(stream); });
}

std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                   IGenericDataReceivedCallback* callback) {
  return Answer(Function::kSetGenericDataCallback, [&] {
    const auto found = Library::Get().FindStream(stream);
    Require(callback, "There is no callback");
    Require(mode == kRegisterDataCallback || mode == kUnregisterDataCallback, "There is no such mode");
    mode == kRegisterDataCallback ? found->Register(*callback) : found->Unregister(*callback);
  });
}

std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream* stream, const void* request,
                                                std::uint32_t requestSize, void** reply, std::uint32_t* replySize) {
  return Answer(Function::kSendSynchDSPCommand, [&] {
    const auto found = Library::Get().FindStream(stream);
    Require(request && reply && replySize, "There is no request, or the reply has nowhere to go");
    auto answer = found->Send({static_cast<const std::uint8_t*>(request), requestSize});
    *replySize = static_cast<std::uint32_t>(answer->GetLength());
    *reply = Library::Get().KeepReply(std::move(answer));
  });
}

std::uint8_t TarnDBI_ReleaseReference(void* reply) {
  return Answer(Function::kReleaseReference, [&] { Library::Get().ReleaseReply(reply); });
}

void TarnLiveStream_Destroy(Tarn::TTarnLiveStream* stream) {
  // The stream ends whatever a fault says, because the finder never calls again for it; a fault only leaves its record.
  Answer(Function::kDestroy, [] {});
  try {
    Library::Get().RemoveStream(stream)->Destroy();
  } catch (const Refused& refused) {
    simulator::RememberFailure(refused.GetFailure());
  }
}

std::uint8_t TarnDBIGetLastError(DBIErrorRecord* record) {
  bool filled = false;
  Answer(Function::kGetLastError, [&] { filled = record && simulator::FillErrorRecord(*record); });
  return filled;
}

}  // extern "C"
