/// "connecting … 3 s" on the terminal at standard error, written anew while something lasts.
#pragma once

#include <string>

#include "tools/event_queue.h"

namespace tarnfind {

/// Writes nothing where standard error is no terminal, and nothing in the first part of a second.
class WaitLine {
 public:
  explicit WaitLine(std::string what);
  /// Wipes the line out.
  ~WaitLine();
  WaitLine(const WaitLine&) = delete;
  WaitLine& operator=(const WaitLine&) = delete;

  /// To be called several times a second.
  void Update();

 private:
  std::string what_;
  Clock::time_point start_ = Clock::now();
  bool terminal_;
  std::string shown_;  ///< empty: nothing yet
};

}  // namespace tarnfind
