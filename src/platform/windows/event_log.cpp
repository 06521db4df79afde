#include "platform/event_log.h"

#include "platform/windows/api.h"

namespace platform {

EventSource RegisterEventSourceW(const char16_t* sourceName) {
  return ::RegisterEventSourceW(nullptr, Wide(sourceName));
}

bool ReportEventW(EventSource source, std::uint16_t eventType, const void* userSid, const char16_t* text) {
  const wchar_t* const texts[] = {Wide(text)};
  return ::ReportEventW(source, eventType, 0, 0, const_cast<void*>(userSid), 1, 0, const_cast<const wchar_t**>(texts),
                        nullptr) != FALSE;
}

bool DeregisterEventSource(EventSource source) {
  return ::DeregisterEventSource(source) != FALSE;
}

}  // namespace platform
