/// A thread for calls of the finder. A call blocks for as long as the server likes; the user may leave before.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tools/event_queue.h"

namespace tarnfind {

/// Used by the main thread.
class FinderThread {
 public:
  FinderThread();
  /// Ends the thread. Leaves it behind where its call has not returned.
  ~FinderThread();
  FinderThread(const FinderThread&) = delete;
  FinderThread& operator=(const FinderThread&) = delete;

  /// Begins a call. Requires that no other call is under way, and that the call owns all that it uses, because it may
  /// be left behind.
  void Begin(std::function<void()> call);
  /// Begins the call that lets the library's objects go. The library ends the process in it where the server refuses to
  /// remove the callback, because a destructor may not throw. Here only this thread stops, and the call counts as one
  /// that does not return.
  void BeginLast(std::function<void()> call);
  /// Whether the library has wanted to end the process, with the reason or an empty text.
  std::optional<std::string> Stopped() const;
  /// Waits until no call is under way. False where one still is at the deadline, and at once where Stopped.
  bool WaitUntil(Clock::time_point deadline);
  /// Throws what the last call threw. Requires that no call is under way.
  void Rethrow();

  /// True where a thread of this process was left behind. The process must then end with std::_Exit, because static
  /// objects may not be destroyed beside a thread that uses them.
  static bool AnyLeftBehind();

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::function<void()> call;  ///< empty where no call is under way
    std::exception_ptr error;
    bool ended = false;
    std::optional<std::string> stopped;
  };
  static void Run(State& state);

  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace tarnfind
