/// The last 512 exceptions of the process, for a look at a memory dump: nothing in the library reads them back.
///
/// Memory: An entry keeps at most kMostUnits units of each text, because texts may come from the server. The history as
/// a whole takes at most kMostBytes, whatever is thrown. The exception itself carries its texts whole.
/// Life: The module makes the history when it is loaded and destroys it at unload. What is thrown outside that time is
/// not recorded.
/// Threads: Exceptions may be thrown on any thread, at any time, also while the history is made or destroyed: each
/// addition looks for it under a lock that is never destroyed.
#pragma once

#include <cstddef>
#include <list>
#include <string>

#include "base/exceptions.h"

namespace Kestrel {

struct ExceptionHistoryEntry {
  std::string className;       ///< always that of the root class, because its constructor makes the entry
  KestrelException exception;  ///< texts cut to kMostUnits; fields of derived classes are not kept
};

class ExceptionHistory {
 public:
  static constexpr std::size_t kCapacity = 512;
  static constexpr std::size_t kMostUnits = 256;
  static constexpr std::size_t kMostBytes = 1 << 20;

  /// The process-wide history lives from here …
  ExceptionHistory();
  /// … to here. One at a time.
  ~ExceptionHistory();
  ExceptionHistory(const ExceptionHistory&) = delete;
  ExceptionHistory& operator=(const ExceptionHistory&) = delete;

  /// A copy, oldest first.
  std::list<ExceptionHistoryEntry> Entries() const;

  /// Adds to the process-wide history if there is one. Throws std::bad_alloc where there is no memory for the entry.
  static void Add(const KestrelException& exception);

 private:
  /// Allocates nothing while it is empty, so that a library is loaded without memory too.
  std::list<ExceptionHistoryEntry> entries_;
};

}  // namespace Kestrel
