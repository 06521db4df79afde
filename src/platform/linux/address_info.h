/// Address resolution behind the names and the layout that Windows' socket library has.
#pragma once

#include <sys/socket.h>

#include <cstddef>

namespace platform {

/// ADDRINFOW. Families, socket types and flags have this system's values.
struct AddressInfo {
  int flags;
  int family;
  int socketType;
  int protocol;
  std::size_t addressBytes;
  char16_t* canonicalName;
  sockaddr* address;
  AddressInfo* next;
};

/// Returns 0 or a socket error code. *result is freed with FreeAddrInfoW.
int GetAddrInfoW(const char16_t* node, const char16_t* service, const AddressInfo* hints, AddressInfo** result);
void FreeAddrInfoW(AddressInfo* list);

}  // namespace platform
