#include "base/debug_out.h"

#include <utility>

#include "platform/debugger.h"
#include "platform/threads.h"

namespace Kestrel {

DebugOut::Message::Message(const char* source, std::uint32_t level, std::uint32_t targetFlags)
    : record{platform::GetCurrentThreadId(), source, level}, flags(targetFlags), streamer(DebugOutStreamer::Get()) {}

/// The settings may have come since the statement was created.
void DebugOut::Message::Emit() const {
  if (!streamer->IsActive() || !Passes(record.source, record.level)) return;
  if (DebugOutReadyMark::IsSet()) return streamer->Emit(record, text, flags);
  platform::OutputDebugStringW(u"STATOUT: ");
  if (!text.empty()) platform::OutputDebugStringW(text.c_str());
}

void DebugOut::Finish() {
  if (!message_) return;
  const Message message = std::move(*message_);
  message_.reset();
  message.Emit();
}

void DebugOut::FinishQuietly() {
  try {
    message_->Emit();
  } catch (...) {  // a destructor must not throw
  }
}

}  // namespace Kestrel
