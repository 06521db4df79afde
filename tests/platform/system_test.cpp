// What the remaining headers promise on every system.
#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/accounts.h"
#include "platform/com.h"
#include "platform/critical_section.h"
#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/modules.h"
#include "platform/registry.h"
#include "platform/sockets.h"

using namespace platform;

namespace Kestrel {
class SampleException {};
}  // namespace Kestrel

namespace {

TEST(CriticalSections, AreRecursiveAndExclude) {
  CriticalSection section(1000);
  int count = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 5000; ++i) {
        const std::lock_guard outer(section);
        const std::lock_guard inner(section);
        ++count;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 20000);
}

TEST(Errors, SystemTextEndsWithALineEnd) {
  for (const std::uint32_t code : {2U, 122U, 0x8007007AU}) {
    char16_t* text = nullptr;
    const std::uint32_t units = FormatMessageW(code, &text);
    ASSERT_GT(units, 2U) << code;
    EXPECT_EQ(std::u16string(text).size(), units);
    EXPECT_TRUE(std::u16string(text).ends_with(u"\r\n"));
    LocalFree(text);
  }
  char16_t* text = nullptr;
  EXPECT_EQ(FormatMessageW(0xE0001234, &text), 0U);
}

TEST(Bstr, LengthStandsBeforeTheText) {
  char16_t* const text = SysAllocStringByteLen("abc", 3);
  std::uint32_t length = 0;
  std::memcpy(&length, reinterpret_cast<char*>(text) - 4, 4);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(SysStringByteLen(text), 3U);
  EXPECT_EQ(std::memcmp(text, "abc\0\0", 5), 0);
  SysFreeString(text);
  char16_t* const copy = SysAllocString(u"\u00E4b");
  EXPECT_EQ(SysStringByteLen(copy), 4U);
  EXPECT_EQ(std::u16string(copy), u"\u00E4b");
  SysFreeString(copy);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(Modules, OwnFileNameIsCutToTheRoom) {
  char16_t path[1024] = {};
  const std::uint32_t length =
      GetModuleFileNameW(ModuleContaining(reinterpret_cast<const void*>(&WSAStartup)), path, 1024);
  ASSERT_GT(length, 14U);
  EXPECT_TRUE(std::u16string(PathFindFileNameW(path)).starts_with(u"platform_tests"));
  EXPECT_EQ(std::u16string(PathFindFileNameW(u"C:\\a\\b.exe")), u"b.exe");
  char16_t small[8];
  EXPECT_EQ(GetModuleFileNameW(nullptr, small, 8), 8U);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(Modules, SocketLibraryIsFoundInTheSystemDirectoryAndByItsName) {
  char16_t directory[260];
  ASSERT_GT(GetSystemDirectoryW(directory, 260), 0U);
  const ModuleHandle module = LoadLibraryExW((std::u16string(directory) + u"\\ws2_32.dll").c_str(), 0);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(GetModuleHandleW(u"Ws2_32"), module);
  EXPECT_NE(GetProcAddress(module, "GetAddrInfoW"), nullptr);
  EXPECT_NE(GetProcAddress(module, "FreeAddrInfoW"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "NoSuchFunction"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(LoadLibraryExW(u"NoSuchModule.dll", LOAD_LIBRARY_SEARCH_DEFAULT_DIRS), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(Modules, TypeNameIsQualifiedAsInTheSource) {
  EXPECT_EQ(UndecoratedTypeName(typeid(Kestrel::SampleException)), "Kestrel::SampleException");
}

TEST(Sockets, OneCleanupTooManyIsAnError) {
  ASSERT_EQ(WSAStartup(), 0);
  EXPECT_EQ(WSACleanup(), 0);
  // Libraries of the system may have started it too.
  int result = 0;
  for (int i = 0; i < 20 && result == 0; ++i) result = WSACleanup();
  EXPECT_EQ(result, 10093);
}

TEST(Accounts, CurrentUserHasASecurityIdentifier) {
  char16_t user[300] = {};
  std::uint32_t units = 300;
  ASSERT_TRUE(GetUserNameExSamCompatible(user, &units));
  EXPECT_NE(std::u16string(user).find(u'\\'), std::u16string::npos);

  std::uint32_t sidBytes = 0, domainUnits = 0;
  EXPECT_FALSE(LookupAccountNameW(user, nullptr, &sidBytes, nullptr, &domainUnits));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  std::vector<std::uint8_t> sid(sidBytes);
  std::u16string domain(domainUnits, u'\0');
  ASSERT_TRUE(LookupAccountNameW(user, sid.data(), &sidBytes, domain.data(), &domainUnits));
  EXPECT_EQ(sid.at(0), 1) << "revision";
  EXPECT_EQ(sidBytes, 8U + 4U * sid.at(1));

  EXPECT_FALSE(LookupAccountNameW(u"no such account", sid.data(), &sidBytes, domain.data(), &domainUnits));
  EXPECT_EQ(GetLastError(), ERROR_NONE_MAPPED);
}

}  // namespace
