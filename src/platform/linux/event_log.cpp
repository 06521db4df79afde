#include "platform/event_log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"
#include "platform/linux/time_zone.h"

/// Events go to the socket of the system's log, one message each. The functions of the C library are not used, because
/// they have one name and one connection for the whole process, and those are the host's.
namespace platform {
namespace {

struct EventPriority {
  std::uint16_t eventType;
  int priority;
};
constexpr EventPriority kPriorities[] = {
    {1, LOG_USER | LOG_ERR},          // error
    {2, LOG_USER | LOG_WARNING},      // warning
    {4, LOG_USER | LOG_INFO},         // information
    {8, LOG_AUTHPRIV | LOG_INFO},     // audit success
    {16, LOG_AUTHPRIV | LOG_NOTICE},  // audit failure
};

int PriorityOf(std::uint16_t eventType) {
  for (const EventPriority& row : kPriorities)
    if (row.eventType == eventType) return row.priority;
  return LOG_USER | LOG_INFO;
}

/// A message as syslog() of the C library sends it, in local time: "<11>Mar  4 13:05:09 name[pid]: text".
std::string MessageOf(int priority, const char* name, const std::string& text) {
  static constexpr char kMonths[][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::tm local = LocalParts(std::time(nullptr));
  char head[64];
  std::snprintf(head, sizeof head, "<%d>%s %2d %02d:%02d:%02d ", priority, kMonths[local.tm_mon], local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec);
  return std::string(head) + name + "[" + std::to_string(getpid()) + "]: " + text;
}

/// A log listens for datagrams, or for a stream in which a NUL ends each message.
/// Never waits, because a log that has stopped reading would stop every thread that writes a line.
bool Send(int socketType, const sockaddr_un& address, std::string message) {
  const int connection = socket(AF_UNIX, socketType | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (connection < 0) return false;
  if (socketType == SOCK_STREAM) message += '\0';
  ssize_t sent = -1;
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) do
      sent = send(connection, message.data(), message.size(), MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
  close(connection);
  return sent == static_cast<ssize_t>(message.size());
}

bool Failed(std::uint32_t code) {
  SetLastError(code);
  return false;
}

}  // namespace

EventSource RegisterEventSourceW(const char16_t* sourceName) {
  char* const name = strdup(Utf8Text(sourceName).c_str());
  if (!name) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return name;
}

bool ReportEventW(EventSource source, std::uint16_t eventType, const void*, const char16_t* text) {
  if (!source) return Failed(ERROR_INVALID_HANDLE);
  const std::string path = EnvironmentText("TARN_EVENT_LOG", "/dev/log");
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  if (path.size() >= sizeof address.sun_path) return Failed(ERROR_INVALID_PARAMETER);
  path.copy(address.sun_path, path.size());
  const std::string message = MessageOf(PriorityOf(eventType), static_cast<const char*>(source), Utf8Text(text));
  return Send(SOCK_DGRAM, address, message) || Send(SOCK_STREAM, address, message) || Failed(ERROR_FILE_NOT_FOUND);
}

bool DeregisterEventSource(EventSource source) {
  if (!source) return Failed(ERROR_INVALID_HANDLE);
  std::free(source);
  return true;
}

}  // namespace platform
