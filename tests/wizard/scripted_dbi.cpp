#include "wizard/scripted_dbi.h"

#include <algorithm>

using scripted::Failure;
using scripted::Function;

namespace {

scripted::Dbi& TheDbi() {
  static scripted::Dbi dbi;
  return dbi;
}

/// The last failure of the calling thread.
thread_local bool hasRecord = false;

}  // namespace

bool scripted::Dbi::Note(Function function) {
  const std::lock_guard guard(lock_);
  if (notesCalls_) calls_.push_back(function);
  const auto failure = failures_.find(function);
  hasRecord = failure != failures_.end() && failure->second == Failure::kWithRecord;
  return failure == failures_.end();
}

namespace scripted {

/// What each function does when it is not told to fail; where a failure leaves no record, it does so as well.
struct Functions {
  static void Register(Dbi& dbi, void* stream, IGenericDataReceivedCallback* callback) {
    const std::lock_guard guard(dbi.lock_);
    dbi.receivers_.push_back({stream, callback});
    callback->AddRef();
  }
  static void Unregister(Dbi& dbi, IGenericDataReceivedCallback* callback) {
    bool found = false;
    {
      const std::lock_guard guard(dbi.lock_);
      found = std::erase_if(dbi.receivers_, [&](const auto& entry) { return entry.receiver == callback; }) == 1;
    }
    if (found) callback->Release();
  }
  static void Answer(Dbi& dbi, const void* request, std::uint32_t size, void** reply, std::uint32_t* replySize) {
    const std::lock_guard guard(dbi.lock_);
    const auto* const bytes = static_cast<const std::uint8_t*>(request);
    dbi.lastRequest_.assign(bytes, bytes + size);
    // A block of exactly the reply's size, so that a read beyond it is seen.
    auto* const copy = new std::uint8_t[dbi.reply_.size()];
    std::ranges::copy(dbi.reply_, copy);
    ++dbi.openReplies_;
    *reply = copy;
    *replySize = static_cast<std::uint32_t>(dbi.reply_.size());
  }
  static void ReleaseReply(Dbi& dbi, void* reply) {
    const std::lock_guard guard(dbi.lock_);
    delete[] static_cast<std::uint8_t*>(reply);
    --dbi.openReplies_;
  }
  static void CountStream(Dbi& dbi, int by) {
    const std::lock_guard guard(dbi.lock_);
    dbi.openStreams_ += by;
  }
  static void KeepChannelArgument(Dbi& dbi, void* argument) {
    const std::lock_guard guard(dbi.lock_);
    dbi.channelArgument_ = argument;
  }
};

}  // namespace scripted

using scripted::Functions;

#define SCRIPTED_EXPORT extern "C" __attribute__((visibility("default")))

SCRIPTED_EXPORT scripted::Dbi* GetScriptedDbi() {
  return &TheDbi();
}

SCRIPTED_EXPORT std::uint8_t TarnServer_CreateLiveStream(void* server, Tarn::TTarnLiveStream** stream) {
  if (!TheDbi().Note(Function::kCreate)) return 0;
  Functions::CountStream(TheDbi(), 1);
  *stream = static_cast<Tarn::TTarnLiveStream*>(server);
  return 1;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream*, const StreamOpenParameters* parameters,
                                                 std::uint64_t reserved1, void** output1, void** output2,
                                                 std::uint64_t reserved2) {
  Functions::KeepChannelArgument(TheDbi(), parameters->channelArgument);
  const bool asAgreed = parameters->sizeInBytes == 24 && parameters->reserved == 0 && reserved1 == 0 && output1 &&
                        output2 && reserved2 == 0;
  return TheDbi().Note(Function::kOpen) && asAgreed;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream*) {
  return TheDbi().Note(Function::kStart);
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                                   IGenericDataReceivedCallback* callback) {
  if (mode == kRegisterDataCallback) {
    if (!TheDbi().Note(Function::kRegister)) return 0;
    Functions::Register(TheDbi(), stream, callback);
  } else {
    const bool succeeds = TheDbi().Note(Function::kUnregister);
    Functions::Unregister(TheDbi(), callback);
    return succeeds;
  }
  return 1;
}

SCRIPTED_EXPORT std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream*, const void* request,
                                                                std::uint32_t requestSize, void** reply,
                                                                std::uint32_t* replySize) {
  const bool succeeds = TheDbi().Note(Function::kSend);
  // A failed call hands a reply over as well: it must be released all the same.
  Functions::Answer(TheDbi(), request, requestSize, reply, replySize);
  return succeeds;
}

SCRIPTED_EXPORT std::uint8_t TarnDBI_ReleaseReference(void* reply) {
  const bool succeeds = TheDbi().Note(Function::kReleaseReply);
  Functions::ReleaseReply(TheDbi(), reply);
  return succeeds;
}

SCRIPTED_EXPORT void TarnLiveStream_Destroy(Tarn::TTarnLiveStream*) {
  TheDbi().Note(Function::kDestroy);
  Functions::CountStream(TheDbi(), -1);
}

SCRIPTED_EXPORT std::uint8_t TarnDBIGetLastError(DBIErrorRecord* record) {
  if (!hasRecord) return 0;
  hasRecord = false;
  *record = {7, 4711, "Platform::StreamError", nullptr, u"Der Stream fehlt: Küche", "channel 3"};
  return 1;
}
