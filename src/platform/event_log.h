/// The event log of the local machine. On Linux it is the system log, at the socket that TARN_EVENT_LOG names (/dev/log
/// unless set); the host's own connection to it is left alone. The facility is LOG_USER, that of audits LOG_AUTHPRIV.
///
/// Each function fails with the thread's last error set. Thread-safe; a source may be used by several threads.
#pragma once

#include <cstdint>

namespace platform {

using EventSource = void*;

/// Null on failure. The source is given back with DeregisterEventSource.
EventSource RegisterEventSourceW(const char16_t* sourceName);
/// One event, category 0, id 0, one text, no data. eventType: 1 error, 2 warning, 4 information, 8 and 16 success and
/// failure of an audit. userSid: a security identifier in its binary form, or null; Linux does not log it.
bool ReportEventW(EventSource source, std::uint16_t eventType, const void* userSid, const char16_t* text);
bool DeregisterEventSource(EventSource source);

}  // namespace platform
