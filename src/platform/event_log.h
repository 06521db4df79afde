/// The system's event log.
#pragma once

#include <cstdint>

namespace platform {

using EventSource = void*;

/// On the local machine; null on failure.
EventSource RegisterEventSourceW(const char16_t* sourceName);
/// One event, category 0, id 0, one text, no data. userSid may be null.
bool ReportEventW(EventSource source, std::uint16_t eventType, const void* userSid, const char16_t* text);
bool DeregisterEventSource(EventSource source);

}  // namespace platform
