#include "simulator/platform/threads.h"

#include <atomic>
#include <list>
#include <mutex>
#include <thread>

namespace simulator {
namespace {

struct Member {
  std::thread thread;
  std::atomic<bool> ended{false};
};

}  // namespace

struct ThreadGroup::State {
  std::mutex lock;
  std::list<Member> members;
};

ThreadGroup::ThreadGroup() : state_(std::make_unique<State>()) {}

ThreadGroup::~ThreadGroup() = default;

void ThreadGroup::Start(std::function<void()> body) {
  const std::lock_guard guard(state_->lock);
  // Joins threads that have ended, so that they do not pile up while streams come and go.
  state_->members.remove_if([](Member& member) {
    if (!member.ended.load()) return false;
    member.thread.join();
    return true;
  });
  Member& member = state_->members.emplace_back();
  try {
    member.thread = std::thread([&member, run = std::move(body)]() mutable {
      run();
      run = nullptr;  // frees what the body holds before the thread counts as ended
      member.ended.store(true);
    });
  } catch (...) {  // without a thread the member would never end
    state_->members.pop_back();
    throw;
  }
}

void ThreadGroup::End(const std::function<void()>& askToEnd) {
  askToEnd();
  for (Member& member : state_->members) member.thread.join();
  state_->members.clear();
}

void ThreadGroup::LetGo() {
  const std::lock_guard guard(state_->lock);
  for (Member& member : state_->members) member.thread.detach();
}

}  // namespace simulator
