/// Why a command ends early; each exception has its exit code.
#pragma once

#include <stdexcept>

namespace tarnfind {

enum ExitCode : int { kDone = 0, kFailed = 1, kWrongUse = 2 };

/// The operation failed: exit code 1. The text is for the user, one line.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};
/// The arguments or the surroundings do not allow the command: exit code 2.
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};
/// Whoever read the output has gone, as `head` does when it has enough. Nothing is wrong.
struct ReaderGone {};

}  // namespace tarnfind
