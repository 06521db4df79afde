#include "tools/wall_time.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace tarnfind {

namespace {

std::time_t WholeSeconds(WallTime time) {
  return std::chrono::system_clock::to_time_t(time);
}

long long Milliseconds(WallTime time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
}

}  // namespace

std::string ClockTime(WallTime time) {
  return fmt::format("{:%H:%M:%S}", fmt::localtime(WholeSeconds(time)));
}

std::string PreciseClockTime(WallTime time) {
  return fmt::format("{}.{:03}", ClockTime(time), Milliseconds(time));
}

std::string UtcTime(WallTime time) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(WholeSeconds(time)), Milliseconds(time));
}

}  // namespace tarnfind
