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
#include "platform/type_name.h"

using namespace platform;

namespace {

TEST(Errors, SystemTextEndsWithALineEndAndStandsForItsResultToo) {
  const auto textOf = [](std::uint32_t code) {
    char16_t* text = nullptr;
    const std::uint32_t units = FormatMessageW(code, &text);
    const std::u16string copy(text ? text : u"");
    LocalFree(text);
    EXPECT_EQ(copy.size(), units) << code;
    return copy;
  };
  for (const std::uint32_t code : {5U, 122U, 10013U}) {
    EXPECT_TRUE(textOf(code).ends_with(u"\r\n")) << code;
    EXPECT_EQ(textOf(0x80070000 | code), textOf(code)) << code;
  }
  EXPECT_EQ(textOf(0xDEADBEEF), u"");
  EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
}

TEST(CriticalSection, ItsThreadEntersAgainAndNoOther) {
  CriticalSection section(10);
  int count = 0;
  const auto add = [&] {
    for (int i = 0; i < 10000; ++i) {
      const std::lock_guard outer(section), inner(section);
      ++count;
    }
  };
  std::thread other(add);
  add();
  other.join();
  EXPECT_EQ(count, 20000);
}

TEST(Bstr, LengthStandsBeforeTheText) {
  char16_t* const text = SysAllocStringByteLen("abc", 3);
  std::uint32_t length = 0;
  std::memcpy(&length, reinterpret_cast<char*>(text) - 4, 4);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(std::memcmp(text, "abc\0\0", 5), 0);
  EXPECT_EQ(SysStringByteLen(text), 3U);
  EXPECT_EQ(SysStringByteLen(nullptr), 0U);
  SysFreeString(text);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(Modules, OwnFileNameIsCutToTheRoom) {
  char16_t path[1024] = {};
  GetModuleFileNameW(ModuleContaining(reinterpret_cast<const void*>(&WSAStartup)), path, 1024);
  EXPECT_TRUE(std::u16string(PathFindFileNameW(path)).starts_with(u"platform_tests"));
  EXPECT_EQ(std::u16string(PathFindFileNameW(u"C:\\a\\b.exe")), u"b.exe");
  char16_t small[8];
  EXPECT_EQ(GetModuleFileNameW(nullptr, small, 8), 8U);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  GetModuleFileNameW(nullptr, path, 1024);
  EXPECT_EQ(std::u16string(small, 7), std::u16string(path, 7));
}

TEST(Modules, SocketLibraryIsFoundInTheSystemDirectoryAndByItsName) {
  char16_t directory[260];
  const std::uint32_t length = GetSystemDirectoryW(directory, 260);
  ASSERT_EQ(std::u16string(directory).size(), length);
  EXPECT_EQ(GetSystemDirectoryW(directory + length, 2), length + 1) << "the room needed";
  directory[length] = u'\0';
  const ModuleHandle module = LoadLibraryExW((std::u16string(directory) + u"\\ws2_32.dll").c_str(), 0);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(GetModuleHandleW(u"Ws2_32"), module);
  EXPECT_NE(GetProcAddress(module, "GetAddrInfoW"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "NoSuchFunction"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(LoadLibraryExW(u"NoSuchModule.dll", LOAD_LIBRARY_SEARCH_DEFAULT_DIRS), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(TypeName, IsQualifiedAsInTheSource) {
  EXPECT_EQ(UndecoratedTypeName(typeid(testing::Message)), "testing::Message");
}

TEST(Accounts, CurrentUserHasASecurityIdentifier) {
  char16_t user[300] = {};
  std::uint32_t units = 300;
  ASSERT_TRUE(GetUserNameExSamCompatible(user, &units));
  EXPECT_NE(std::u16string(user).find(u'\\'), std::u16string::npos);

  std::uint32_t needed = 2;
  EXPECT_FALSE(GetUserNameExSamCompatible(user + 200, &needed));
  EXPECT_EQ(GetLastError(), ERROR_MORE_DATA);
  EXPECT_EQ(needed, units + 1);
  const std::u16string bare = std::u16string(user).substr(std::u16string(user).find(u'\\') + 1);
  needed = static_cast<std::uint32_t>(bare.size());
  EXPECT_FALSE(GetUserNameW(user + 200, &needed));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(needed, bare.size() + 1);
  EXPECT_TRUE(GetUserNameW(user + 200, &needed));
  EXPECT_EQ(user + 200, bare);

  std::uint32_t sidBytes = 0, domainUnits = 0;
  EXPECT_FALSE(LookupAccountNameW(user, nullptr, &sidBytes, nullptr, &domainUnits));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  std::vector<std::uint8_t> sid(sidBytes);
  std::u16string domain(domainUnits, u'\0');
  --domainUnits;
  EXPECT_FALSE(LookupAccountNameW(user, sid.data(), &sidBytes, domain.data(), &domainUnits));
  ASSERT_TRUE(LookupAccountNameW(user, sid.data(), &sidBytes, domain.data(), &domainUnits));
  EXPECT_EQ(sid.at(0), 1) << "revision";
  EXPECT_EQ(sidBytes, 8U + 4U * sid.at(1));

  EXPECT_FALSE(LookupAccountNameW(u"no such account", sid.data(), &sidBytes, domain.data(), &domainUnits));
  EXPECT_EQ(GetLastError(), ERROR_NONE_MAPPED);
}

}  // namespace
