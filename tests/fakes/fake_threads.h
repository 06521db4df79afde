/// Stands in for the workers: every hand-over runs on a thread of its own, is counted, and can be refused. A test
/// program that lists fake_threads.cpp among its sources uses it.
#pragma once

#include <atomic>

namespace fakes {

inline std::atomic<int> handOvers{0};
/// No worker can be had.
inline std::atomic<bool> refuseHandOvers{false};

}  // namespace fakes
