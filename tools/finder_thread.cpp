#include "tools/finder_thread.h"

#include <atomic>
#include <utility>

#include "tools/stoppable_call.h"

namespace tarnfind {

namespace {
std::atomic<bool> leftBehind = false;
}

FinderThread::FinderThread() : state_(std::make_shared<State>()), thread_([state = state_] { Run(*state); }) {}

FinderThread::~FinderThread() {
  bool idle;
  {
    const std::lock_guard lock(state_->mutex);
    state_->ended = true;
    idle = !state_->call;
  }
  state_->changed.notify_all();
  if (idle) {
    thread_.join();
  } else {
    leftBehind = true;
    thread_.detach();
  }
}

void FinderThread::Run(State& state) {
  std::unique_lock lock(state.mutex);
  for (;;) {
    state.changed.wait(lock, [&] { return state.ended || state.call; });
    if (!state.call) return;
    std::function<void()> call = state.call;
    lock.unlock();
    std::exception_ptr error;
    try {
      call();
    } catch (...) {  // whoever waits gets it from Rethrow
      error = std::current_exception();
    }
    call = nullptr;  // what the call owns goes before the call counts as ended
    lock.lock();
    state.error = error;
    state.call = nullptr;
    state.changed.notify_all();
  }
}

void FinderThread::Begin(std::function<void()> call) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->error = nullptr;
    state_->call = std::move(call);
  }
  state_->changed.notify_all();
}

void FinderThread::BeginLast(std::function<void()> call) {
  Begin([call = std::move(call), state = state_] {
    RunStoppable(call, [state](const std::string& text) {
      {
        const std::lock_guard lock(state->mutex);
        state->stopped = text;
      }
      state->changed.notify_all();
    });
  });
}

std::optional<std::string> FinderThread::Stopped() const {
  const std::lock_guard lock(state_->mutex);
  return state_->stopped;
}

bool FinderThread::WaitUntil(Clock::time_point deadline) {
  std::unique_lock lock(state_->mutex);
  state_->changed.wait_until(lock, deadline, [&] { return !state_->call || state_->stopped; });
  return !state_->call;
}

void FinderThread::Rethrow() {
  if (const std::exception_ptr error = std::exchange(state_->error, nullptr)) std::rethrow_exception(error);
}

bool FinderThread::AnyLeftBehind() {
  return leftBehind;
}

}  // namespace tarnfind
