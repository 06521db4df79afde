#include "simulator/faults.h"

#include <thread>

namespace simulator {

Outcome FunctionFaults::EnterCall(Function function) {
  const std::uint64_t call = calls_[static_cast<std::size_t>(function)].fetch_add(1) + 1;
  Outcome outcome = Outcome::kAsUsual;
  for (const FunctionFault& fault : scenario_->functionFaults) {
    if (fault.function != function || !fault.call.Matches(call)) continue;
    if (fault.delayMs > 0) std::this_thread::sleep_for(scenario_->Scaled(fault.delayMs));
    if (fault.outcome == Outcome::kAsUsual) continue;
    outcome = fault.outcome;
    outcome == Outcome::kFailsWithRecord ? RememberFailure(fault.failure) : ForgetFailure();
  }
  return outcome;
}

std::uint64_t ApplyBlockFaults(const Scenario& scenario, std::uint64_t number, std::vector<std::uint8_t>& block) {
  std::uint64_t delayMs = 0;
  for (const BlockFault& fault : scenario.blockFaults) {
    if (!fault.block.Matches(number)) continue;
    delayMs += fault.delayMs;
    if (fault.alterAt && *fault.alterAt < block.size()) block[*fault.alterAt] ^= fault.alterMask.value_or(0xFF);
    if (fault.cutAt && *fault.cutAt < block.size()) block.resize(*fault.cutAt);
  }
  return delayMs;
}

}  // namespace simulator
