#include "diagnostics/output_history_streamer.h"

#include <algorithm>
#include <mutex>

#include "base/append_text.h"
#include "platform/clock.h"

namespace Kestrel {
namespace {

TKestrelDateTime UtcNow() {
  platform::FileTime now;
  platform::GetSystemTimeAsFileTime(&now);
  TKestrelDateTime time;
  time.SetUTCMilliseconds(TKestrelDateTime::kUtc, static_cast<std::int64_t>(Ticks(now) / kTicksPerMillisecond), 0);
  return time;
}

}  // namespace

HistoryLine::HistoryLine(const DebugOutRecord& record) {
  constexpr std::size_t kUsualLength = 96;
  whole.reserve(kUsualLength);
  AppendText(whole, LevelText(record.level));
  whole += u" : [";
  AppendText(whole, record.source);
  whole += u"] ";
  frame = whole.size();
}

void OutputHistoryStreamer::Add(std::uint32_t level, std::u16string& line) {
  const std::lock_guard guard(lock_);
  if (entries_.size() < capacity_) entries_.emplace_back();
  OutputHistoryEntry& entry = entries_[next_];
  if (++next_ == capacity_) next_ = 0;
  entry.level = level;
  entry.time = UtcNow();
  entry.line.swap(line);
}

std::vector<OutputHistoryEntry> OutputHistoryStreamer::Entries() const {
  const std::lock_guard guard(lock_);
  std::vector<OutputHistoryEntry> oldestFirst = entries_;
  std::rotate(oldestFirst.begin(), oldestFirst.begin() + static_cast<std::ptrdiff_t>(next_), oldestFirst.end());
  return oldestFirst;
}

}  // namespace Kestrel
