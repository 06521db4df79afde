/// Delivery threads, and what becomes of them when the library goes: the one thing here that differs between systems.
///
/// Linux    A thread may be joined while the library is being unloaded, so that is when the group waits for its
/// threads. Windows  Joining at that moment dead-locks. Each thread holds a reference on the module instead and drops
/// it as its
///          last act, so the module stays until its threads have gone. At process exit the system ends them first,
///          wherever they stand, and the locks they held stay locked.
#pragma once

#include <functional>
#include <memory>

namespace simulator {

class ThreadGroup {
 public:
  ThreadGroup();
  /// Requires that End was called, or that nothing was started.
  ~ThreadGroup();
  ThreadGroup(const ThreadGroup&) = delete;
  ThreadGroup& operator=(const ThreadGroup&) = delete;

  /// Runs body on a new thread. The body must not throw. Throws std::system_error where no thread can be had.
  void Start(std::function<void()> body);

  /// For the end of the library. True when no thread of the group is left; askToEnd may have been called to get there.
  /// False: the threads were ended from outside, and what they used must neither be touched nor destroyed.
  bool End(const std::function<void()>& askToEnd);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace simulator
