/// The simulator's own generator: the same numbers for the same seed with every compiler and library.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace simulator {

/// splitmix64.
class Random {
 public:
  /// All numbers together are the seed; their order matters.
  Random(std::initializer_list<std::uint64_t> seeds) {
    for (const std::uint64_t seed : seeds) {
      state_ ^= seed;
      state_ = Next();
    }
  }

  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
    return mixed ^ (mixed >> 31);
  }
  /// 0 to bound - 1. Requires a bound above 0.
  std::uint64_t Below(std::uint64_t bound) { return Next() % bound; }

 private:
  std::uint64_t state_ = 0;
};

}  // namespace simulator
