/// Why a command ends early, and the exit code that tells it.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace tarnfind {

enum ExitCode : int { kDone = 0, kFailed = 1, kWrongUse = 2, kNoChannel = 3, kMissed = 4 };

struct ExitCodeRow {
  ExitCode code;
  const char* meaning;
};
/// Also printed by --help. docs/tarnfind.md has the same table.
inline constexpr ExitCodeRow kExitCodes[] = {
    {kDone, "done"},
    {kFailed, "failed"},
    {kWrongUse, "wrong use"},
    {kNoChannel, "no channel to the server"},
    {kMissed, "expectation missed, or a setting that did not take"},
};

/// The text is one line for the user.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& text, std::string step = {})
      : std::runtime_error(text), code_(code), step_(std::move(step)) {}

  ExitCode Code() const { return code_; }
  /// The step (see steps.h) at which the way to the server ended; empty for errors of another kind.
  const std::string& Step() const { return step_; }

 private:
  ExitCode code_;
  std::string step_;
};
struct Failure : CommandError {
  explicit Failure(const std::string& text, std::string step = {}) : CommandError(kFailed, text, std::move(step)) {}
};
struct WrongUse : CommandError {
  explicit WrongUse(const std::string& text) : CommandError(kWrongUse, text) {}
};
struct NoChannel : CommandError {
  NoChannel(std::string step, const std::string& text) : CommandError(kNoChannel, text, std::move(step)) {}
};
struct Missed : CommandError {
  explicit Missed(const std::string& text) : CommandError(kMissed, text) {}
};
/// The reader of the output has closed the pipe, as `head` does when it has enough. That is no failure.
struct ReaderGone {};

/// The exception's text as one line of UTF-8. Texts of the library are in the system's code page, our own in UTF-8.
std::string ErrorText(const std::exception& error);
/// The system's words for errno, which a file stream leaves behind; "unknown reason" where it is 0. Set it to 0 before.
std::string FileFailureReason();

}  // namespace tarnfind
