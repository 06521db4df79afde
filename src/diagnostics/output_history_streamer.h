/// The last messages that were written to any target, once for each of their targets. Nothing in the library reads
/// them; they are for a memory dump.
///
/// Each entry's line is "<level> : [<source>] <text>", without the thread and without a line end.
///
/// Memory: twice capacity times the longest message bounds the history, because lines keep the room they grew in.
/// Threads: any; the history has a lock of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/critical_section.h"
#include "diagnostics/output_target.h"
#include "time/date_time.h"

namespace Kestrel {

struct OutputHistoryEntry {
  std::uint32_t level;
  TKestrelDateTime time;  ///< UTC, bias 0
  std::u16string line;
};

/// What a statement collects its text in: the history's line of its message, so that the line need not be made when the
/// message is written, while other threads wait.
struct HistoryLine {
  /// Throws SystemException where the source cannot be widened.
  explicit HistoryLine(const DebugOutRecord& record);
  /// What was appended to whole. A NUL stands behind it.
  std::u16string_view Text() const { return std::u16string_view(whole).substr(frame); }

  std::u16string whole;
  std::size_t frame;  ///< length of "<level> : [<source>] "
};

class OutputHistoryStreamer final {
 public:
  /// capacity is the number of entries; each further one replaces the oldest. Requires at least 1.
  explicit OutputHistoryStreamer(std::size_t capacity) : capacity_(capacity) {}

  /// Adds an entry. The line that it replaces, if any, comes back in line, for the caller to free when no thread waits
  /// any more.
  void Add(std::uint32_t level, std::u16string& line);

  /// A copy, oldest first.
  std::vector<OutputHistoryEntry> Entries() const;

 private:
  mutable CriticalSection lock_;
  std::vector<OutputHistoryEntry> entries_;  ///< a ring, once there are capacity_ of them
  std::size_t next_ = 0;                     ///< the oldest then, else the end
  const std::size_t capacity_;
};

}  // namespace Kestrel
