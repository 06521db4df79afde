/// What the eight functions share: the loaded scenario, the open streams and the open replies.
///
/// Lifetime  Made by the first call; ends when the library is unloaded. Stays at the end of the process.
/// Threads   Every operation may be called on any thread. No callback is called with the lock held.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "dbi/dbi.h"
#include "simulator/faults.h"
#include "simulator/platform/threads.h"
#include "simulator/scenario.h"
#include "simulator/stream.h"
#include "valuelist/buffer.h"

namespace simulator {

class Library {
 public:
  static Library& Get();

  /// Reads the scenario again. The counts of calls start anew where its text or path has changed. Throws
  /// ScenarioMistake; the scenario that was loaded stays then.
  void LoadScenario();
  /// As FunctionFaults::EnterCall; kAsUsual where no scenario has been loaded.
  Outcome EnterCall(Function function);

  /// Requires a loaded scenario.
  Tarn::TTarnLiveStream* CreateStream();
  /// Throws Refused where the handle is not that of an open stream.
  std::shared_ptr<Stream> FindStream(Tarn::TTarnLiveStream* handle);
  std::shared_ptr<Stream> RemoveStream(Tarn::TTarnLiveStream* handle);

  /// Returns the reply's bytes, which stay valid until ReleaseReply.
  void* KeepReply(Kestrel::ReferencePointer<Kestrel::Buffer> reply);
  /// Throws Refused where there is no such reply.
  void ReleaseReply(void* bytes);

  /// For the unload: ends all streams and their threads.
  void End();
  /// For the end of the process: streams and threads stay as they are.
  void LetGo();

 private:
  Library() = default;
  friend class LibraryHolder;

  ThreadGroup threads_;
  std::mutex lock_;
  std::string scenarioPath_;
  std::string scenarioText_;
  std::shared_ptr<const Scenario> scenario_;
  std::shared_ptr<FunctionFaults> faults_;
  std::size_t streamsCreated_ = 0;  ///< since the scenario was loaded
  std::map<Tarn::TTarnLiveStream*, std::shared_ptr<Stream>> streams_;
  std::map<void*, Kestrel::ReferencePointer<Kestrel::Buffer>> replies_;
};

}  // namespace simulator
