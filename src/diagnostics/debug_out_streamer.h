/// Kestrel::DebugOutStreamer: takes each finished message to its targets, and a copy for each target to the history.
///
/// Threads: Any. One critical section is held from the first target's write to the last target's flush, so that
/// messages of several threads do not mix.
/// Locks: That critical section is the first lock that diagnostic output takes. The locks of the event log and of the
/// history are taken while it is held.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <string>

#include "base/critical_section.h"
#include "base/reference_counting.h"
#include "diagnostics/output_history_streamer.h"
#include "diagnostics/output_target.h"

namespace Kestrel {

/// How SetOutputTargets takes its mask. Any other number changes nothing.
enum OutputTargetMode : std::uint32_t {
  otmReplace = 0,
  otmRemove = 1,
  otmAdd = 2,
};

/// What an application that embeds the library may change. The library itself calls only IsActive, and SetOutputTargets
/// in the dispatcher's constructor. The order of the functions is fixed: it is that of the table of virtual functions.
class IDebugOutStreamerProperties : public virtual ReferenceCounted {
 public:
  virtual bool IsActive() const = 0;
  /// Opens the file target's file. False where that fails, and where the dispatcher has no target at all. Messages
  /// that name dotFile go there; those that name dotDefault do too while dotFile is a default target.
  virtual bool OpenOutputFile(const char16_t* path) = 0;
  /// Changes the default targets by a mask of DebugOutTarget flags. Returns the resulting mask.
  virtual std::uint32_t SetOutputTargets(std::uint32_t mask, std::uint32_t mode) = 0;
};

class DebugOutStreamer final : public IDebugOutStreamerProperties {
 public:
  static constexpr std::size_t kHistoryCapacity = 1024;

  /// The default target is the console where the process has a console window, else the debugger window. Throws
  /// SystemException with the context "GetModuleFileNameW" where the prefix of the debugger window is unknown.
  DebugOutStreamer();

  /// The process-wide dispatcher, made on first use. Throws as the constructor does.
  static ReferencePointer<DebugOutStreamer> Get();
  /// For the module's unload. A statement that was begun before it and is finished afterwards writes nothing.
  static void Destroy();

  bool IsActive() const override { return enabled_.load(std::memory_order_relaxed) == 1; }
  bool OpenOutputFile(const char16_t* path) override;
  std::uint32_t SetOutputTargets(std::uint32_t mask, std::uint32_t mode) override;

  /// Writes one message to the targets that flags name and flushes them; an empty text is only flushed. Where a target
  /// throws, the others are served all the same, and the first exception is thrown on afterwards. The line goes to the
  /// history; what stands in it afterwards is of no use.
  void Emit(const DebugOutRecord& record, HistoryLine& line, std::uint32_t flags);

  const OutputHistoryStreamer& GetHistory() const { return history_; }

 private:
  /// In the order in which targets are served.
  static constexpr std::array<std::uint32_t, 5> kKnownFlags = {dotConsole, dotDebugWindow, dotFile, dotReserved,
                                                               dotEventLog};

  /// Null for a flag that has no target.
  IDebugOutStreamerObject* FindOrCreate(std::uint32_t flag);
  IDebugOutStreamerObject* Find(std::uint32_t flag) const;
  /// The target that a message names. Null, and none is created, where the dispatcher has no target at all.
  IDebugOutStreamerObject* TargetForMessage(std::uint32_t flag);
  void SetDefault(std::uint32_t flag, bool isDefault);

  std::map<std::uint32_t, ReferencePointer<IDebugOutStreamerObject>> targets_;  ///< by flag
  std::uint32_t defaultTargets_ = 0;
  std::atomic<std::uint32_t> enabled_{1};
  OutputHistoryStreamer history_{kHistoryCapacity};
  /// On a cache line of its own, because a thread that begins or ends a statement counts its reference on this object,
  /// and would take the line from the thread that holds the lock.
  struct alignas(64) LockOnItsCacheLine : CriticalSection {};
  LockOnItsCacheLine lock_;
};

}  // namespace Kestrel
