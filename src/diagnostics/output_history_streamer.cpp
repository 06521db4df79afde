#include "diagnostics/output_history_streamer.h"

#include <mutex>

#include "base/append_text.h"
#include "platform/clock.h"

namespace Kestrel {
namespace {

void SetHistoryLine(std::u16string& line, const DebugOutRecord& record, const std::u16string& text) {
  constexpr std::size_t kUsualFrame = 32;
  // The storage of a much longer message goes, because a history of short ones would keep it.
  if (line.capacity() > 4 * (text.size() + kUsualFrame)) std::u16string().swap(line);
  line.clear();
  line.reserve(text.size() + kUsualFrame);
  AppendText(line, LevelText(record.level));
  line += u" : [";
  AppendText(line, record.source);
  line += u"] ";
  line += text;
}

TKestrelDateTime UtcNow() {
  platform::FileTime now;
  platform::GetSystemTimeAsFileTime(&now);
  TKestrelDateTime time;
  time.SetUTCMilliseconds(TKestrelDateTime::kUtc, static_cast<std::int64_t>(Ticks(now) / kTicksPerMillisecond), 0);
  return time;
}

}  // namespace

void OutputHistoryStreamer::Write(const DebugOutRecord& record, const std::u16string& text) {
  const std::lock_guard guard(lock_);
  OutputHistoryEntry entry;
  if (entries_.size() >= capacity_) {
    entry = std::move(entries_.front());
    entries_.pop_front();
  }
  entry.level = record.level;
  entry.time = UtcNow();
  SetHistoryLine(entry.line, record, text);
  entries_.push_back(std::move(entry));
}

std::deque<OutputHistoryEntry> OutputHistoryStreamer::Entries() const {
  const std::lock_guard guard(lock_);
  return entries_;
}

}  // namespace Kestrel
