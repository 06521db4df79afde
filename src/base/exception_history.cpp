#include "base/exception_history.h"

#include <atomic>
#include <mutex>

#include "base/static_lock.h"

namespace Kestrel {
namespace {

/// Value of the guard word while there is a history; also what to look for in a memory dump.
constexpr std::uint32_t kHistoryAlive = 0x591DB60E;

constinit std::atomic<std::uint32_t> guardWord{0};
constinit ExceptionHistory* processHistory = nullptr;  ///< valid while the guard word says so

CriticalSection& HistoryLock() {
  return StaticLock<ExceptionHistory>();
}

bool IsAlive() {
  return guardWord.load(std::memory_order_acquire) == kHistoryAlive;
}

}  // namespace

ExceptionHistory::ExceptionHistory() {
  const std::lock_guard guard(HistoryLock());
  processHistory = this;
  guardWord.exchange(kHistoryAlive);
}

ExceptionHistory::~ExceptionHistory() {
  const std::lock_guard guard(HistoryLock());
  guardWord.exchange(0);
}

std::list<ExceptionHistoryEntry> ExceptionHistory::Entries() const {
  const std::lock_guard guard(HistoryLock());
  return entries_;
}

void ExceptionHistory::Add(const KestrelException& exception) {
  if (!IsAlive()) return;
  const std::lock_guard guard(HistoryLock());
  // Asked again, because the history may have gone before the lock was taken.
  if (!IsAlive()) return;
  std::list<ExceptionHistoryEntry>& entries = processHistory->entries_;
  entries.push_back({exception.GetClassName(), KestrelException(exception, kMostUnits)});
  while (entries.size() > kCapacity) entries.pop_front();
}

}  // namespace Kestrel
