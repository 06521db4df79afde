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
#include "dbi/dbi.h"

namespace scripted {

enum class Function { kCreate, kOpen, kStart, kRegister, kUnregister, kSend, kReleaseReply, kDestroy };
inline constexpr const char* kNames[] = {"create",     "open", "start",   "register",
                                         "unregister", "send", "release", "destroy"};

enum class Failure { kWithRecord, kWithoutRecord };

using Bytes = std::vector<std::uint8_t>;

/// What a test says, and what was asked since.
struct Script {
  bool notesCalls = true;
  std::string calls;  ///< their names, separated by blanks
  std::map<Function, Failure> failures;
  Bytes reply, lastRequest;
  bool hidesReply = false;  ///< its size is told, its address is not
  void* channelArgument = nullptr;
};

struct Registration {
  void* stream;
  IGenericDataReceivedCallback* receiver;
};

/// What is open now.
struct State {
  Script script;
  std::vector<Registration> receivers;  ///< in order of registration; one reference each
  int openReplies = 0;
  int openStreams = 0;
};

class Dbi {
 public:
  struct Access {
    std::unique_lock<std::mutex> guard;
    State& state;
    State* operator->() const { return &state; }
  };
  /// The state, locked while the result lives.
  Access Locked() { return {std::unique_lock(lock_), state_}; }

  /// Forgets calls, failures and replies.
  void Reset() { Locked()->script = {}; }
  /// For long runs: calls are not noted from now on.
  void StopNotingCalls() { Locked()->script.notesCalls = false; }
  /// Every call of the function fails from now on.
  void Fail(Function function, Failure failure) { Locked()->script.failures[function] = failure; }
  void SetReply(Bytes reply) { Locked()->script.reply = std::move(reply); }
  std::string Calls() { return Locked()->script.calls; }
  void ForgetCalls() { Locked()->script.calls.clear(); }
  /// Runs on the thread that loads the module loading_module, with the loader's lock held.
  std::function<void()> insideLoad;
  Bytes LastRequest() { return Locked()->script.lastRequest; }
  int OpenReplies() { return Locked()->openReplies; }

  /// Delivers a block to the receiver that was registered last, on the calling thread. A stream is what its finder was
  /// given as server handle; null stands for any. False where no receiver is registered.
  bool Push(std::uint32_t messageType, const Bytes& block, std::int32_t blockKind = 2, void* stream = nullptr) {
    const auto receiver = Receiver(stream);
    if (receiver) receiver->OnGenericData(blockKind, messageType, block.data(), block.size());
    return static_cast<bool>(receiver);
  }
  void Detach(void* stream = nullptr) {
    if (const auto receiver = Receiver(stream)) receiver->OnDetach();
  }

 private:
  Kestrel::ComPtr<IGenericDataReceivedCallback> Receiver(void* stream) {
    Kestrel::ComPtr<IGenericDataReceivedCallback> receiver;
    const Access access = Locked();
    for (const Registration& registration : access->receivers)
      if (!stream || registration.stream == stream) receiver = Kestrel::ComPtr(registration.receiver);
    return receiver;
  }

  std::mutex lock_;
  State state_;
};

}  // namespace scripted

/// The one that the eight functions of this process use.
extern "C" scripted::Dbi* GetScriptedDbi();
