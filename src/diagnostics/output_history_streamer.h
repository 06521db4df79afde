/// The last messages that were written to any target. Nothing in the library reads them; they are for a memory dump.
///
/// Each entry's line is "<level> : [<source>] <text>", without the thread and without a line end.
///
/// Memory: the lines are kept whole, so capacity times the longest message bounds the history.
/// Threads: any; the history has a lock of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "base/critical_section.h"
#include "diagnostics/output_target.h"
#include "time/date_time.h"

namespace Kestrel {

struct OutputHistoryEntry {
  std::uint32_t level;
  TKestrelDateTime time;  ///< UTC, bias 0
  std::u16string line;
};

class OutputHistoryStreamer final : public IDebugOutStreamerObject {
 public:
  /// capacity is the number of entries; each further one replaces the oldest. Requires at least 1.
  explicit OutputHistoryStreamer(std::size_t capacity) : capacity_(capacity) {}

  void Write(const DebugOutRecord& record, const std::u16string& text) override;

  /// A copy, oldest first.
  std::deque<OutputHistoryEntry> Entries() const;

 private:
  mutable CriticalSection lock_;
  std::deque<OutputHistoryEntry> entries_;
  const std::size_t capacity_;
};

}  // namespace Kestrel
