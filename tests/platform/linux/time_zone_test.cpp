#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/time_zone.h"

using namespace platform;

namespace {

/// Month, day of the week, week, hour, minute.
using Rule = std::vector<int>;
Rule RuleOf(const SystemTime& date) {
  return {date.month, date.dayOfWeek, date.day, date.hour, date.minute};
}

struct Zone {
  const char* name;
  const char* setting;
  int bias, daylightBias;
  Rule standard, daylight;
};

class TimeZones : public testing::TestWithParam<Zone> {
 protected:
  ~TimeZones() override {
    setenv("TZ", "UTC", 1);
    tzset();
  }
};

/// Settings that carry their rules, so that no zone files are needed; every year of more than a calendar cycle.
TEST_P(TimeZones, RulesAreFoundFromTheTransitions) {
  const Zone& zone = GetParam();
  setenv("TZ", zone.setting, 1);
  tzset();
  for (std::time_t now = 1000000000; now < 1000000000 + 30LL * 31556952; now += 31556952) {
    SCOPED_TRACE(now);
    const TimeZoneInformation rules = TimeZoneYearOf(now).rules;
    EXPECT_EQ(rules.bias, zone.bias);
    EXPECT_EQ(rules.daylightBias, zone.daylightBias);
    EXPECT_EQ(RuleOf(rules.standardDate), zone.standard);
    EXPECT_EQ(RuleOf(rules.daylightDate), zone.daylight);
  }
  TimeZoneInformation information{};
  EXPECT_EQ(GetTimeZoneInformation(&information) == 0, zone.daylight[0] == 0);
  EXPECT_EQ(information.bias, zone.bias);
}

INSTANTIATE_TEST_SUITE_P(
    , TimeZones,
    testing::ValuesIn(std::vector<Zone>{
        {"None", "UTC0", 0, 0, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}},
        {"HalfHour", "<+0530>-5:30", -330, 0, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}},
        {"North", "CET-1CEST,M3.5.0,M10.5.0/3", -60, -60, {10, 0, 5, 3, 0}, {3, 0, 5, 2, 0}},
        {"West", "EST5EDT,M3.2.0,M11.1.0", 300, -60, {11, 0, 1, 2, 0}, {3, 0, 2, 2, 0}},
        {"South", "AEST-10AEDT,M10.1.0,M4.1.0/3", -600, -60, {4, 0, 1, 3, 0}, {10, 0, 1, 2, 0}},
        {"HalfAnHourOfDaylight", "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {4, 0, 1, 2, 0}, {10, 0, 1, 2, 0}},
    }),
    [](const auto& row) { return row.param.name; });

}  // namespace
