#include "platform/linux/address_info.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>

#include <string>

#include "platform/sockets.h"

static int outcome = 0;

/// The resolver of this program: the name and an address twice, or a failure.
extern "C" int getaddrinfo(const char* node, const char*, const addrinfo* hints, addrinfo** result) {
  static sockaddr_in address{AF_INET, 80, {}, {}};
  static std::string name;
  static addrinfo entries[2];
  name = node ? node : "";
  for (addrinfo& entry : entries) {
    entry = *hints;
    entry.ai_addrlen = sizeof address;
    entry.ai_addr = reinterpret_cast<sockaddr*>(&address);
  }
  entries[0].ai_canonname = name.data();
  entries[0].ai_next = &entries[1];
  *result = entries;
  return outcome;
}
extern "C" void freeaddrinfo(addrinfo*) noexcept {}

TEST(AddressInfo, EntriesAreCopiedAndFailuresAreThoseOfWindows) {
  const platform::AddressInfo hints{AI_CANONNAME, AF_INET, SOCK_STREAM, IPPROTO_TCP, 0, nullptr, nullptr, nullptr};
  platform::AddressInfo* list = nullptr;
  ASSERT_EQ(platform::GetAddrInfoW(u"h\u00F6st", nullptr, &hints, &list), 0);
  ASSERT_NE(list->next, nullptr);
  for (const auto* entry : {list, list->next})
    EXPECT_EQ(reinterpret_cast<const sockaddr_in*>(entry->address)->sin_port, 80);
  EXPECT_EQ(std::u16string(list->canonicalName), u"h\u00F6st");
  EXPECT_EQ(list->flags * 1000 + list->family * 100 + list->socketType * 10 + list->protocol, 2216);
  EXPECT_TRUE(!list->next->canonicalName && !list->next->next);
  platform::FreeAddrInfoW(list);
  const std::pair<int, int> rows[] = {{EAI_AGAIN, 11002},   {EAI_BADFLAGS, 10022}, {EAI_FAIL, 11003},
                                      {EAI_FAMILY, 10047},  {EAI_MEMORY, 8},       {EAI_NONAME, 11001},
                                      {EAI_SERVICE, 10109}, {EAI_SOCKTYPE, 10044}, {EAI_SYSTEM, 11001}};
  for (const auto& [error, socketError] : rows) {
    outcome = error;
    EXPECT_EQ(platform::GetAddrInfoW(nullptr, nullptr, &hints, &list), socketError);
    EXPECT_EQ(list, nullptr);
  }
}

TEST(Sockets, StopsAreCounted) {
  EXPECT_EQ(platform::WSAStartup(), 0);
  EXPECT_EQ(platform::WSACleanup(), 0);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(platform::WSACleanup(), 10093);
}
