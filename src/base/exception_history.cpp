#include "base/exception_history.h"

#include <atomic>
#include <mutex>

namespace Kestrel {
namespace {

/// Value of the guard word while there is a history; also what to look for in a memory dump.
constexpr std::uint32_t kHistoryAlive = 0x591DB60E;

constinit std::atomic<std::uint32_t> guardWord{0};
constinit ExceptionHistory* processHistory = nullptr;  ///< valid while the guard word says so

}  // namespace

ExceptionHistory::ExceptionHistory() {
  processHistory = this;
  guardWord.exchange(kHistoryAlive);
}

ExceptionHistory::~ExceptionHistory() {
  guardWord.exchange(0);
}

std::deque<ExceptionHistoryEntry> ExceptionHistory::Entries() const {
  const std::lock_guard guard(lock_);
  return entries_;
}

void ExceptionHistory::Add(const KestrelException& exception) {
  if (guardWord.load(std::memory_order_acquire) == kHistoryAlive) processHistory->Append(exception);
}

void ExceptionHistory::Append(const KestrelException& exception) {
  const std::lock_guard guard(lock_);
  entries_.push_back({exception.GetClassName(), exception});
  while (entries_.size() > kCapacity) entries_.pop_front();
}

}  // namespace Kestrel
