#include "platform/linux/address_info.h"

#include <netdb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/linux/text.h"

namespace platform {
namespace {

/// An error of the C library's resolver, and the socket error of Windows that it becomes.
struct ErrorMapping {
  int resolver;
  int socketError;
};
constexpr ErrorMapping kErrors[] = {
    {EAI_AGAIN, 11002}, {EAI_BADFLAGS, 10022}, {EAI_FAIL, 11003},    {EAI_FAMILY, 10047},
    {EAI_MEMORY, 8},    {EAI_NONAME, 11001},   {EAI_SERVICE, 10109}, {EAI_SOCKTYPE, 10044},
};
constexpr int kHostNotFound = 11001;

int SocketErrorOf(int resolverError) {
  for (const ErrorMapping& row : kErrors)
    if (row.resolver == resolverError) return row.socketError;
  return kHostNotFound;
}

/// One block: the entry, then the socket address it points to.
AddressInfo* Copy(const addrinfo& from) {
  void* const block = std::calloc(1, sizeof(AddressInfo) + from.ai_addrlen);
  if (!block) return nullptr;
  auto* const address = reinterpret_cast<sockaddr*>(static_cast<char*>(block) + sizeof(AddressInfo));
  std::memcpy(address, from.ai_addr, from.ai_addrlen);
  return new (block) AddressInfo{from.ai_flags,   from.ai_family, from.ai_socktype, from.ai_protocol,
                                 from.ai_addrlen, nullptr,        address,          nullptr};
}

char16_t* CopyText(const std::u16string& text) {
  auto* const copy = static_cast<char16_t*>(std::malloc((text.size() + 1) * sizeof(char16_t)));
  if (copy) CopyWithNul(text, copy, text.size() + 1);
  return copy;
}

}  // namespace

int GetAddrInfoW(const char16_t* node, const char16_t* service, const AddressInfo* hints, AddressInfo** result) {
  *result = nullptr;
  addrinfo wanted{};
  if (hints) {
    wanted.ai_flags = hints->flags;
    wanted.ai_family = hints->family;
    wanted.ai_socktype = hints->socketType;
    wanted.ai_protocol = hints->protocol;
  }
  const std::string nodeText = node ? Utf8Text(node) : std::string();
  const std::string serviceText = service ? Utf8Text(service) : std::string();
  addrinfo* found = nullptr;
  const int error = getaddrinfo(node ? nodeText.c_str() : nullptr, service ? serviceText.c_str() : nullptr,
                                hints ? &wanted : nullptr, &found);
  if (error != 0) return SocketErrorOf(error);
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
  AddressInfo** tail = result;
  for (const addrinfo* entry = found; entry; entry = entry->ai_next) {
    *tail = Copy(*entry);
    if (!*tail) {
      FreeAddrInfoW(*result);
      *result = nullptr;
      return SocketErrorOf(EAI_MEMORY);
    }
    if (entry->ai_canonname) (*tail)->canonicalName = CopyText(WideText(entry->ai_canonname));
    tail = &(*tail)->next;
  }
  return 0;
}

void FreeAddrInfoW(AddressInfo* list) {
  while (list) {
    AddressInfo* const next = list->next;
    std::free(list->canonicalName);
    std::free(list);
    list = next;
  }
}

}  // namespace platform
