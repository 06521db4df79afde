/// The last 512 exceptions of the process, for a look at a memory dump: nothing in the library reads them back.
///
/// The module creates the history when it is loaded and destroys it at unload; exceptions made outside that time are
/// not recorded. Every constructor adds from inside the root class, so each entry's name is the root's.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "base/critical_section.h"
#include "base/exceptions.h"

namespace Kestrel {

struct ExceptionHistoryEntry {
  std::string className;
  KestrelException exception;  ///< fields of derived classes are not kept
};

class ExceptionHistory {
 public:
  static constexpr std::size_t kCapacity = 512;

  /// The process-wide history lives from here …
  ExceptionHistory();
  /// … to here. One at a time.
  ~ExceptionHistory();
  ExceptionHistory(const ExceptionHistory&) = delete;
  ExceptionHistory& operator=(const ExceptionHistory&) = delete;

  /// A copy, oldest first.
  std::deque<ExceptionHistoryEntry> Entries() const;

  /// Adds to the process-wide history if there is one. Thread-safe; throws what copying throws.
  static void Add(const KestrelException& exception);

 private:
  void Append(const KestrelException& exception);

  mutable CriticalSection lock_;
  std::deque<ExceptionHistoryEntry> entries_;
};

}  // namespace Kestrel
