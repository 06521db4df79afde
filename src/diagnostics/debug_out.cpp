#include "diagnostics/debug_out.h"

#include <utility>

#include "platform/debugger.h"
#include "platform/threads.h"

namespace Kestrel {

void DebugOut::Begin(const char* source, std::uint32_t level, std::uint32_t flags) {
  message_ = Message{{platform::GetCurrentThreadId(), source, level}, flags, DebugOutStreamer::Get(), {}};
}

/// The filter is asked again, because the settings may have been made after the statement.
void DebugOut::Finish() {
  const std::optional<Message> message = std::exchange(message_, std::nullopt);
  if (!message || !message->streamer->IsActive() || !Passes(message->record.source, message->record.level)) return;
  if (DebugOutReadyMark::IsSet()) return message->streamer->Emit(message->record, message->text, message->flags);
  platform::OutputDebugStringW(u"STATOUT: ");
  if (!message->text.empty()) platform::OutputDebugStringW(message->text.c_str());
}

void DebugOut::FinishQuietly() {
  try {
    Finish();
  } catch (...) {  // a destructor must not throw
  }
}

}  // namespace Kestrel
