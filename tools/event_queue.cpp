#include "tools/event_queue.h"

#include <utility>

namespace tarnfind {

void EventQueue::Push(Event event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  changed_.notify_all();
}

void EventQueue::Finish() {
  {
    const std::lock_guard lock(mutex_);
    finished_ = true;
  }
  changed_.notify_all();
}

std::vector<Event> EventQueue::TakeUntil(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, deadline, [&] { return finished_ || !events_.empty(); });
  return std::exchange(events_, {});
}

bool EventQueue::WaitFinished(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline, [&] { return finished_; });
}

}  // namespace tarnfind
