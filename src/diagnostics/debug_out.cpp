#include "diagnostics/debug_out.h"

#include <utility>

#include "platform/debugger.h"
#include "platform/threads.h"

namespace Kestrel {

void DebugOut::Begin(const char* source, std::uint32_t level, std::uint32_t flags) {
  const DebugOutRecord record{platform::GetCurrentThreadId(), source, level};
  message_ = Message{record, flags, DebugOutStreamer::Get(), HistoryLine(record)};
}

/// The filter is asked again, because the settings may have been made after the statement.
void DebugOut::Finish() {
  std::optional<Message> message = std::exchange(message_, std::nullopt);
  if (!message || !message->streamer->IsActive() || !Passes(message->record.source, message->record.level)) return;
  if (DebugOutReadyMark::IsSet()) return message->streamer->Emit(message->record, message->line, message->flags);
  platform::OutputDebugStringW(u"STATOUT: ");
  if (const auto text = message->line.Text(); !text.empty()) platform::OutputDebugStringW(text.data());
}

void DebugOut::FinishQuietly() {
  try {
    Finish();
  } catch (...) {  // a destructor must not throw
  }
}

}  // namespace Kestrel
