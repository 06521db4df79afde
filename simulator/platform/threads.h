/// Delivery threads, and how they end when the library is unloaded. Only this differs between the systems.
///
/// - Linux: End joins the threads, because a thread may be joined while the library is being unloaded.
/// - Windows: joining at that moment dead-locks. Each thread holds a reference on the module and releases it in its
///   last call, so that the module stays loaded until its threads have ended.
#pragma once

#include <functional>
#include <memory>

namespace simulator {

class ThreadGroup {
 public:
  ThreadGroup();
  /// Requires that End was called, or that nothing was started. Never called after LetGo.
  ~ThreadGroup();
  ThreadGroup(const ThreadGroup&) = delete;
  ThreadGroup& operator=(const ThreadGroup&) = delete;

  /// Runs body on a new thread. The body must not throw. Throws std::system_error where no thread can be had.
  void Start(std::function<void()> body);

  /// Called when the library is unloaded, not at the end of the process. Calls askToEnd where threads may still run.
  /// No thread of the group is left afterwards.
  void End(const std::function<void()>& askToEnd);
  /// Called at the end of the process: threads that still run go on, and nobody waits for them.
  void LetGo();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace simulator
