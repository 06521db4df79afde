/// Writing for diagnostics, which must neither end the host nor be cut by its signals.
#pragma once

#include <csignal>
#include <string_view>

namespace platform {

/// Blocks, in the calling thread, the signals by which a failed write ends a process: SIGPIPE for a reader that has
/// gone, SIGXFSZ for a file at its limit. The write then fails and nothing else happens.
class NoWriteSignals {
 public:
  NoWriteSignals();
  ~NoWriteSignals();
  NoWriteSignals(const NoWriteSignals&) = delete;
  NoWriteSignals& operator=(const NoWriteSignals&) = delete;

  /// Removes the pending signal of a failed write. Not needed after others, because only a failure raises a signal.
  void Drop();

 private:
  sigset_t signals_;
  sigset_t before_;
};

/// Writes the whole text, in one system call where the system takes it at once, and again where a signal interrupts it.
/// Raises no signal. False on failure; part of the text may have been written then.
bool WriteAll(int descriptor, std::string_view text);

}  // namespace platform
