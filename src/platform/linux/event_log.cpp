#include "platform/event_log.h"

#include <syslog.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

struct EventPriority {
  std::uint16_t eventType;
  int priority;
};
constexpr EventPriority kPriorities[] = {
    {1, LOG_ERR},                     // error
    {2, LOG_WARNING},                 // warning
    {4, LOG_INFO},                    // information
    {8, LOG_AUTHPRIV | LOG_INFO},     // audit success
    {16, LOG_AUTHPRIV | LOG_NOTICE},  // audit failure
};

int PriorityOf(std::uint16_t eventType) {
  for (const EventPriority& row : kPriorities)
    if (row.eventType == eventType) return row.priority;
  return LOG_INFO;
}

}  // namespace

EventSource RegisterEventSourceW(const char16_t* sourceName) {
  // The system log keeps the pointer, so the name is the handle and lives until the source is deregistered.
  char* const name = strdup(Utf8Text(sourceName).c_str());
  if (name)
    openlog(name, LOG_PID, LOG_USER);
  else
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return name;
}

bool ReportEventW(EventSource source, std::uint16_t eventType, const void*, const char16_t* text) {
  if (!source) {
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  syslog(PriorityOf(eventType), "%s", Utf8Text(text).c_str());
  return true;
}

bool DeregisterEventSource(EventSource source) {
  if (!source) {
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  closelog();
  std::free(source);
  return true;
}

}  // namespace platform
