#include "base/output_history_streamer.h"

#include <mutex>

#include "base/append_text.h"
#include "platform/clock.h"

namespace Kestrel {
namespace {

std::u16string HistoryLine(const DebugOutRecord& record, const std::u16string& text) {
  constexpr std::size_t kUsualFrame = 32;
  std::u16string line;
  line.reserve(text.size() + kUsualFrame);
  AppendText(line, LevelText(record.level));
  line += u" : [";
  AppendText(line, record.source);
  line += u"] ";
  line += text;
  return line;
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
  entries_.push_back({record.level, UtcNow(), HistoryLine(record, text)});
  while (entries_.size() > capacity_) entries_.pop_front();
}

std::deque<OutputHistoryEntry> OutputHistoryStreamer::Entries() const {
  const std::lock_guard guard(lock_);
  return entries_;
}

}  // namespace Kestrel
