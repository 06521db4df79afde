#include "wizard/scripted_dbi.h"

#include <algorithm>

using scripted::Failure;
using scripted::Function;

namespace {

/// Never destroyed: a program may end while blocks are pushed.
scripted::Dbi& TheDbi() {
  static auto* const dbi = new scripted::Dbi;
  return *dbi;
}

/// The last failure of the calling thread.
thread_local bool hasRecord = false;

/// True where the call shall succeed.
bool Note(Function function) {
  const auto access = TheDbi().Locked();
  scripted::Script& script = access->script;
  if (script.notesCalls && !script.calls.empty()) script.calls += ' ';
  if (script.notesCalls) script.calls += scripted::kNames[static_cast<int>(function)];
  const auto failure = script.failures.find(function);
  hasRecord = failure != script.failures.end() && failure->second == Failure::kWithRecord;
  return failure == script.failures.end();
}

void Unregister(IGenericDataReceivedCallback* callback) {
  const auto isIt = [callback](const auto& entry) { return entry.receiver == callback; };
  // Released without the lock: the receiver may call back then.
  if (std::erase_if(TheDbi().Locked()->receivers, isIt) == 1) callback->Release();
}

}  // namespace

#define SCRIPTED_EXPORT extern "C" __attribute__((visibility("default")))

SCRIPTED_EXPORT scripted::Dbi* GetScriptedDbi() {
  return &TheDbi();
}

SCRIPTED_EXPORT std::uint8_t TarnServer_CreateLiveStream(void* server, Tarn::TTarnLiveStream** stream) {
  if (!Note(Function::kCreate)) return 0;
  ++TheDbi().Locked()->openStreams;
  *stream = static_cast<Tarn::TTarnLiveStream*>(server);
  return 1;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream*, const StreamOpenParameters* parameters,
                                                 std::uint64_t reserved1, void** output1, void** output2,
                                                 std::uint64_t reserved2) {
  TheDbi().Locked()->script.channelArgument = parameters->channelArgument;
  const bool asAgreed = parameters->sizeInBytes == 24 && parameters->reserved == 0 && reserved1 == 0 && output1 &&
                        output2 && reserved2 == 0;
  return Note(Function::kOpen) && asAgreed;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream*) {
  return Note(Function::kStart);
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                                   IGenericDataReceivedCallback* callback) {
  if (mode != kRegisterDataCallback) {
    const bool succeeds = Note(Function::kUnregister);
    Unregister(callback);
    return succeeds;
  }
  if (!Note(Function::kRegister)) return 0;
  TheDbi().Locked()->receivers.push_back({stream, callback});
  callback->AddRef();
  return 1;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream*, const void* request,
                                                                std::uint32_t requestSize, void** reply,
                                                                std::uint32_t* replySize) {
  const bool succeeds = Note(Function::kSend);
  // A failed call hands a reply over as well: it must be released all the same.
  const auto access = TheDbi().Locked();
  const auto* const bytes = static_cast<const std::uint8_t*>(request);
  access->script.lastRequest.assign(bytes, bytes + requestSize);
  *replySize = static_cast<std::uint32_t>(access->script.reply.size());
  if (access->script.hidesReply) return succeeds;
  // A block of exactly the reply's size, so that a read beyond it is seen.
  const scripted::Bytes& answer = access->script.reply;
  auto* const copy = new std::uint8_t[answer.size()];
  std::ranges::copy(answer, copy);
  ++access->openReplies;
  *reply = copy;
  return succeeds;
}

SCRIPTED_EXPORT std::uint8_t TarnDBI_ReleaseReference(void* reply) {
  delete[] static_cast<std::uint8_t*>(reply);
  --TheDbi().Locked()->openReplies;
  return Note(Function::kReleaseReply);
}

SCRIPTED_EXPORT void TarnLiveStream_Destroy(Tarn::TTarnLiveStream*) {
  Note(Function::kDestroy);
  --TheDbi().Locked()->openStreams;
}

SCRIPTED_EXPORT std::uint8_t TarnDBIGetLastError(DBIErrorRecord* record) {
  if (!hasRecord) return 0;
  hasRecord = false;
  *record = {7, 4711, "Platform::StreamError", nullptr, u"Der Stream fehlt: Küche", "channel 3"};
  return 1;
}
