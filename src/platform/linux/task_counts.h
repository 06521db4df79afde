/// How many tasks the workers of this process have run on each processor.
///
/// A waiter that got its processor back late learns here who had it meanwhile: hand-overs of other threads, or another
/// program. Processors whose numbers are 64 apart share a count, which at worst lets a waiter yield once more.
///
/// Threads: any. A count is mostly touched by threads on its own processor, so its cache line stays there.
#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

using TaskCount = std::atomic<std::uint32_t>;

/// Wraps around.
inline TaskCount& TaskCountOf(int processor) {
  struct alignas(64) Line {
    TaskCount count{0};
  };
  constexpr unsigned kLines = 64;
  static constinit Line lines[kLines];
  return lines[static_cast<unsigned>(processor) % kLines].count;
}

}  // namespace platform
