/// The scenario's faults at the eight functions, counted per function since the scenario was loaded.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "simulator/scenario.h"

namespace simulator {

/// May be used on any thread.
class FunctionFaults {
 public:
  explicit FunctionFaults(std::shared_ptr<const Scenario> scenario) : scenario_(std::move(scenario)) {}

  /// Counts a call, waits as long as a fault says, and tells what shall come of the call. Where it shall fail, the
  /// calling thread's last failure is set.
  Outcome EnterCall(Function function);

 private:
  std::shared_ptr<const Scenario> scenario_;
  std::array<std::atomic<std::uint64_t>, kFunctions.size()> calls_{};
};

/// Cuts and alters the block that is the number-th of its stream; the sum of the delays is the result.
std::uint64_t ApplyBlockFaults(const Scenario& scenario, std::uint64_t number, std::vector<std::uint8_t>& block);

}  // namespace simulator
