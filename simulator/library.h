/// What the eight functions share: the scenario that is loaded, the streams and the replies that are open.
///
/// Made with the first call and ended when the library goes. Everything may be called on any thread; nothing is called
/// back with the lock held.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "simulator/faults.h"
#include "simulator/platform/threads.h"
#include "simulator/scenario.h"
#include "simulator/stream.h"
#include "dbi/dbi.h"
#include "valuelist/buffer.h"

namespace simulator {

class Library {
 public:
  static Library& Get();

  /// Reads the scenario again. While it reads the same, calls are counted on; another one starts with a count of 0.
  /// Throws ScenarioMistake; what was loaded stays then.
  void LoadScenario();
  /// As FunctionFaults::EnterCall; kAsUsual where no scenario has been loaded.
  Outcome EnterCall(Function function);

  Tarn::TTarnLiveStream* CreateStream();
  /// Throws Refused where the handle is not that of an open stream.
  std::shared_ptr<Stream> FindStream(Tarn::TTarnLiveStream* handle);
  std::shared_ptr<Stream> RemoveStream(Tarn::TTarnLiveStream* handle);

  /// The reply's bytes, which stay where they are until ReleaseReply.
  void* KeepReply(Kestrel::ReferencePointer<Kestrel::Buffer> reply);
  /// Throws Refused where there is no such reply.
  void ReleaseReply(void* bytes);

  /// For the library's end. False where nothing of it may be touched any more.
  bool End();

 private:
  Library() = default;
  friend class LibraryHolder;

  ThreadGroup threads_;
  std::mutex lock_;
  std::string scenarioPath_;
  std::string scenarioText_;
  std::shared_ptr<const Scenario> scenario_;
  std::shared_ptr<FunctionFaults> faults_;
  std::map<Tarn::TTarnLiveStream*, std::shared_ptr<Stream>> streams_;
  std::map<void*, Kestrel::ReferencePointer<Kestrel::Buffer>> replies_;
};

}  // namespace simulator
