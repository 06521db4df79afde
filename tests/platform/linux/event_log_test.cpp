#include "platform/event_log.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/accounts.h"
#include "platform/error_codes.h"
#include "platform/errors.h"

using namespace platform;

// The name and the connection of the process in the system log are the host's.
extern "C" void openlog(const char*, int, int) noexcept {
  ADD_FAILURE();
}
extern "C" void closelog() noexcept {
  ADD_FAILURE();
}

/// The beginning of a message of this moment, up to the seconds.
static std::string Stamp(const std::string& priority) {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%b %e %H:%M:", std::localtime(&now));
  return "<" + priority + ">" + text;
}

TEST(EventLog, EventsReachALogOfEitherKind) {
  // Not in the build's folder, whose name may be too long for a socket.
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("platform_tests_log" + std::to_string(getpid()));
  setenv("TARN_EVENT_LOG", path.c_str(), 1);
  const EventSource source = RegisterEventSourceW(u"pr\u00F6gram");
  for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
    std::filesystem::remove(path);
    EXPECT_FALSE(ReportEventW(source, 1, nullptr, u"nobody listens"));
    const int log = socket(AF_UNIX, type, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.native().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(log, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    listen(log, 1);  // fails for datagrams, which need none
    for (const auto& [eventType, priority] :
         {std::pair(1, "11"), {2, "12"}, {4, "14"}, {8, "86"}, {16, "85"}, {0, "14"}}) {
      const std::string before = Stamp(priority);
      ASSERT_TRUE(ReportEventW(source, static_cast<std::uint16_t>(eventType), nullptr, u"t\u00E4xt"));
      const int from = type == SOCK_STREAM ? accept(log, nullptr, nullptr) : log;
      std::string message(256, '\0');
      message.resize(static_cast<std::size_t>(recv(from, message.data(), message.size(), 0)));
      if (from != log) close(from);
      const std::string tail = " pr\xC3\xB6gram[" + std::to_string(getpid()) + "]: t\xC3\xA4xt" +
                               (type == SOCK_STREAM ? std::string(1, '\0') : std::string());
      EXPECT_TRUE(message.starts_with(before) || message.starts_with(Stamp(priority))) << message;
      EXPECT_TRUE(message.ends_with(tail)) << message;
      EXPECT_EQ(message.size(), before.size() + 2 + tail.size()) << message;
    }
    int taken = 0;  // by a log that has stopped reading
    for (int i = 0; i < 1000; ++i) taken += ReportEventW(source, 1, nullptr, u"nobody reads");
    EXPECT_LT(taken, 1000);
    close(log);
  }
  std::filesystem::remove(path);
  EXPECT_TRUE(DeregisterEventSource(source));
  EXPECT_FALSE(ReportEventW(nullptr, 1, nullptr, u"") || DeregisterEventSource(nullptr));
  unsetenv("TARN_EVENT_LOG");
}

/// The identifier of a Unix user is S-1-22-1-USER.
TEST(Accounts, AreThoseOfThisHostAlone) {
  char16_t user[256] = {}, domain[256] = {};
  std::uint32_t units = 256, bytes = 16;
  std::uint8_t sid[16] = {};
  ASSERT_TRUE(GetUserNameW(user, &units));
  units = 256;
  ASSERT_TRUE(LookupAccountNameW(user, sid, &bytes, domain, &units));
  EXPECT_EQ(std::string(sid, sid + 12), std::string("\1\2\0\0\0\0\0\x16\1\0\0\0", 12));
  units = 256;
  EXPECT_FALSE(LookupAccountNameW((u"no such host\\" + std::u16string(user)).c_str(), sid, &bytes, domain, &units));
  EXPECT_EQ(GetLastError(), ERROR_NONE_MAPPED);
}
