/// A platform library that does what a test tells it and notes what it is asked: the library under test is linked to it
/// in place of the real one. Every member may be used on any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "com/com_ptr.h"
#include "tarn/dbi.h"

namespace scripted {

enum class Function { kCreate, kOpen, kStart, kRegister, kUnregister, kSend, kReleaseReply, kDestroy };
inline constexpr const char* kNames[] = {"create",     "open", "start",   "register",
                                         "unregister", "send", "release", "destroy"};

enum class Failure { kWithRecord, kWithoutRecord };

using Bytes = std::vector<std::uint8_t>;

class Dbi {
 public:
  /// Forgets calls, failures and replies.
  void Reset() {
    const std::lock_guard guard(lock_);
    calls_.clear();
    failures_.clear();
    lastRequest_.clear();
    reply_.clear();
    channelArgument_ = nullptr;
    notesCalls_ = true;
  }
  /// For long runs: calls are not noted from now on.
  void StopNotingCalls() {
    const std::lock_guard guard(lock_);
    notesCalls_ = false;
  }
  /// Every call of the function fails from now on.
  void Fail(Function function, Failure failure) {
    const std::lock_guard guard(lock_);
    failures_[function] = failure;
  }
  void SetReply(Bytes reply) {
    const std::lock_guard guard(lock_);
    reply_ = std::move(reply);
  }

  /// Names of the calls so far, separated by blanks.
  std::string Calls() {
    const std::lock_guard guard(lock_);
    std::string text;
    for (const Function call : calls_) text += (text.empty() ? "" : " ") + std::string(kNames[static_cast<int>(call)]);
    return text;
  }
  void ForgetCalls() {
    const std::lock_guard guard(lock_);
    calls_.clear();
  }
  Bytes LastRequest() {
    const std::lock_guard guard(lock_);
    return lastRequest_;
  }
  void* ChannelArgument() { return channelArgument_; }
  int OpenReplies() {
    const std::lock_guard guard(lock_);
    return openReplies_;
  }
  int OpenStreams() {
    const std::lock_guard guard(lock_);
    return openStreams_;
  }

  /// Delivers a block to the receiver that was registered last, on the calling thread. A stream is what its finder was
  /// given as server handle; null stands for any. False where no receiver is registered.
  bool Push(std::uint32_t messageType, const Bytes& block, std::int32_t blockKind = 2, void* stream = nullptr) {
    return WithReceiver(
        stream, [&](auto& receiver) { receiver.OnGenericData(blockKind, messageType, block.data(), block.size()); });
  }
  bool Detach(void* stream = nullptr) {
    return WithReceiver(stream, [](auto& receiver) { receiver.OnDetach(); });
  }

  /// For the eight functions. True where the call shall succeed.
  bool Note(Function function);

 private:
  template <class Action>
  bool WithReceiver(void* stream, Action action) {
    Kestrel::ComPtr<IGenericDataReceivedCallback> receiver;
    {
      const std::lock_guard guard(lock_);
      for (const Registration& registration : receivers_)
        if (!stream || registration.stream == stream) receiver = Kestrel::ComPtr(registration.receiver);
    }
    if (receiver) action(*receiver.Get());
    return static_cast<bool>(receiver);
  }

  friend struct Functions;

  std::mutex lock_;
  std::vector<Function> calls_;
  std::map<Function, Failure> failures_;
  Bytes lastRequest_;
  bool notesCalls_ = true;
  Bytes reply_;
  struct Registration {
    void* stream;
    IGenericDataReceivedCallback* receiver;
  };
  std::vector<Registration> receivers_;  ///< in order of registration; one reference each
  void* channelArgument_ = nullptr;
  int openReplies_ = 0;
  int openStreams_ = 0;
};

}  // namespace scripted

/// The one that the eight functions of this process use.
extern "C" scripted::Dbi* GetScriptedDbi();
