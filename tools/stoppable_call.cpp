#include "tools/stoppable_call.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <thread>

#include "tools/failure.h"

namespace tarnfind {

namespace {

/// Of the call on this thread; null outside of one.
thread_local const std::function<void(const std::string&)>* tellStopped = nullptr;

[[noreturn]] void StopThread(const std::string& text) {
  (*tellStopped)(text);
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

std::terminate_handler InstallOnTerminate();

[[noreturn]] void OnTerminate() {
  std::string text;
  try {
    if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
  } catch (const std::exception& error) {
    text = ErrorText(error);
  } catch (...) {  // of a type without a text
  }
  if (tellStopped) StopThread(text);
  InstallOnTerminate()();
  std::abort();
}

/// The handler that was there before.
std::terminate_handler InstallOnTerminate() {
  static const std::terminate_handler before = std::set_terminate(OnTerminate);
  return before;
}

/// A library with a C++ runtime of its own does not call OnTerminate, but its abort raises SIGABRT too.
void OnAbort(int) {
  if (tellStopped) StopThread({});
  std::signal(SIGABRT, SIG_DFL);
}

}  // namespace

void RunStoppable(const std::function<void()>& work, const std::function<void(const std::string& text)>& stopped) {
  InstallOnTerminate();
  std::signal(SIGABRT, OnAbort);
  tellStopped = &stopped;
  work();
  tellStopped = nullptr;
}

}  // namespace tarnfind
