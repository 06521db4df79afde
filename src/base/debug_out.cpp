#include "base/debug_out.h"

#include <utility>

#include "platform/debugger.h"
#include "platform/threads.h"

namespace Kestrel {

void DebugOut::Begin() {
  record_.threadId = platform::GetCurrentThreadId();
  streamer_ = DebugOutStreamer::Get();
}

void DebugOut::Finish() {
  if (std::exchange(enabled_, false)) Emit();
}

/// The settings may have come since the statement was created.
void DebugOut::Emit() const {
  if (!streamer_->IsActive() || !Passes(record_.source, record_.level)) return;
  if (DebugOutReadyMark::IsSet()) return streamer_->Emit(record_, text_, flags_);
  platform::OutputDebugStringW(u"STATOUT: ");
  if (!text_.empty()) platform::OutputDebugStringW(text_.c_str());
}

void DebugOut::FinishQuietly() {
  try {
    Finish();
  } catch (...) {  // a destructor must not throw
  }
}

}  // namespace Kestrel
