#include "platform/linux/time_zone.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "time/time_zone_transitions.h"

using namespace platform;

/// Also where a zone changes once in a year, or four times. A zone's points in time are asked one after the other.
TEST(TimeZones, EveryTransitionOfEveryZoneOfTheSystemCounts) {
  std::FILE* const lines = popen(TARN_PYTHON " " TARN_TEST_FOLDER "/zones.py", "r");
  TimeZoneCache cache;
  char zone[64];
  long long seconds = 0;
  int bias = 0, before = 0, changes = 0, rules = 0;
  while (std::fscanf(lines, "%63s %lld %d", zone, &seconds, &bias) == 3) {
    setenv("TZ", zone, 1);
    const TimeZoneAnswer answer = cache.Get(seconds);
    changes += std::exchange(before, bias) != bias;
    rules += answer.state != 0;
    const int inForce = answer.rules.bias + (answer.state == 2 ? answer.rules.daylightBias : 0);
    const auto sinceYear1601 = static_cast<std::uint64_t>(seconds + 11'644'473'600) * 1000;
    EXPECT_EQ(inForce, bias) << zone << " " << seconds;
    EXPECT_EQ(Kestrel::BiasAt(sinceYear1601, answer.rules), bias) << zone << " " << seconds;
    if (HasFailure()) break;
  }
  pclose(lines);
  setenv("TZ", "UTC", 1);
  EXPECT_TRUE(changes > 1000 && rules > 1000) << changes << " " << rules;
}

/// Settings that carry their rules.
TEST(TimeZones, RulesKeepTheirFormInEveryYear) {
  const struct {
    const char* setting;
    int bias, daylightBias;
    SystemTime standard, daylight;
  } rows[] = {
      {"<+0530>-5:30", -330, 0, {}, {}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", -60, -60, {0, 10, 0, 5, 3, 0, 0, 0}, {0, 3, 0, 5, 2, 0, 0, 0}},
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {0, 4, 0, 1, 2, 0, 0, 0}, {0, 10, 0, 1, 2, 0, 0, 0}},
  };
  TimeZoneCache cache;
  for (const auto& row : rows) {
    setenv("TZ", row.setting, 1);
    tzset();
    EXPECT_EQ(cache.Get(1000000000).rules.bias, row.bias) << "what is kept belongs to another setting";
    for (std::time_t now = 1000000000; now < 1000000000 + 30LL * 31556952; now += 31556952) {
      const TimeZoneInformation rules = TimeZoneAt(now).rules;
      EXPECT_EQ(rules.bias, row.bias) << now;
      EXPECT_EQ(rules.daylightBias, row.daylightBias) << now;
      EXPECT_EQ(std::memcmp(&rules.standardDate, &row.standard, sizeof row.standard), 0) << row.setting << now;
      EXPECT_EQ(std::memcmp(&rules.daylightDate, &row.daylight, sizeof row.daylight), 0) << row.setting << now;
    }
  }
  // Settings that nobody has read yet.
  setenv("TZ", "<+09>-9", 1);
  EXPECT_EQ(LocalParts(0).tm_hour, 9);
  setenv("TZ", "UTC", 1);
  EXPECT_EQ(LocalParts(0).tm_hour, 0);
}
