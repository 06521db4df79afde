/// Times of the day and dates, for people and for JSON.
#pragma once

#include <string>

#include "tools/event_queue.h"

namespace tarnfind {

/// "10:20:30", local time.
std::string ClockTime(WallTime time);
/// "10:20:30.123", local time.
std::string PreciseClockTime(WallTime time);
/// "2026-11-25T10:20:30.123Z"
std::string UtcTime(WallTime time);

}  // namespace tarnfind
