/// The scenario's faults at the eight functions, counted per function since the scenario was loaded.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "simulator/scenario.h"

namespace simulator {

/// Any thread may call it.
class FunctionFaults {
 public:
  explicit FunctionFaults(std::shared_ptr<const Scenario> scenario) : scenario_(std::move(scenario)) {}

  /// Counts a call, waits for the delay of its faults, and returns the outcome that the call must have. A failure with
  /// a record sets the calling thread's last failure; a failure without one clears it.
  Outcome EnterCall(Function function);

 private:
  std::shared_ptr<const Scenario> scenario_;
  std::array<std::atomic<std::uint64_t>, kFunctions.size()> calls_{};
};

/// Cuts and alters a block. number: its place in its stream, from 1 on. Returns the sum of the delays in milliseconds.
std::uint64_t ApplyBlockFaults(const Scenario& scenario, std::uint64_t number, std::vector<std::uint8_t>& block);

}  // namespace simulator
