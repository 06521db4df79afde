#include "diagnostics/eventlog_output_streamer.h"

#include "diagnostics/event_log.h"

namespace Kestrel {
namespace {

EventLogCode CodeOf(std::uint32_t level) {
  if (level == dolError) return elcError;
  return level == dolWarning ? elcWarning : elcInformation;
}

}  // namespace

void EventlogOutputStreamer::Write(const DebugOutRecord& record, std::u16string_view text) {
  EventLog::Get()->Write(StandardLine(record, text), CodeOf(record.level));
}

}  // namespace Kestrel
