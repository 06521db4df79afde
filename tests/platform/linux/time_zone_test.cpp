#include "platform/linux/time_zone.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

using namespace platform;

namespace {

/// Month, day of the week, week, hour, minute.
using Rule = std::vector<int>;
Rule RuleOf(const SystemTime& date) {
  return {date.month, date.dayOfWeek, date.day, date.hour, date.minute};
}

/// Settings that carry their rules, so that no zone files are needed; every year of more than a calendar cycle.
TEST(TimeZones, RulesAreFoundFromTheTransitions) {
  const Rule none = {0, 0, 0, 0, 0};
  const struct {
    const char* setting;
    int bias, daylightBias;
    Rule standard, daylight;
  } rows[] = {
      {"<+0530>-5:30", -330, 0, none, none},
      {"CET-1CEST,M3.5.0,M10.5.0/3", -60, -60, {10, 0, 5, 3, 0}, {3, 0, 5, 2, 0}},
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {4, 0, 1, 2, 0}, {10, 0, 1, 2, 0}},
  };
  for (const auto& zone : rows) {
    SCOPED_TRACE(zone.setting);
    setenv("TZ", zone.setting, 1);
    tzset();
    for (std::time_t now = 1000000000; now < 1000000000 + 30LL * 31556952; now += 31556952) {
      const TimeZoneInformation rules = TimeZoneYearOf(now).rules;
      EXPECT_EQ(rules.bias, zone.bias) << now;
      EXPECT_EQ(rules.daylightBias, zone.daylightBias) << now;
      EXPECT_EQ(RuleOf(rules.standardDate), zone.standard) << now;
      EXPECT_EQ(RuleOf(rules.daylightDate), zone.daylight) << now;
    }
    TimeZoneInformation information{};
    EXPECT_EQ(GetTimeZoneInformation(&information) == 0, zone.daylight == none);
    EXPECT_EQ(information.bias, zone.bias);
  }
  setenv("TZ", "UTC", 1);
  tzset();
}

}  // namespace
