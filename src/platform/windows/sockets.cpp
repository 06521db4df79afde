#include "platform/sockets.h"

#include "platform/windows/api.h"

namespace platform {

int WSAStartup() {
  WSADATA data;
  return ::WSAStartup(MAKEWORD(2, 2), &data);
}

int WSACleanup() {
  return ::WSACleanup() == 0 ? 0 : ::WSAGetLastError();
}

}  // namespace platform
