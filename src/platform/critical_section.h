/// A recursive lock with a spin phase. Destroying it while it is held is undefined; everything else is thread-safe.
///
/// On Windows it stays safe to enter while a process exits, when the thread that held it is dead already; a mutex of
/// the standard library does not. So every lock taken on the way out is one of these.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

class CriticalSection {
 public:
  /// spinCount: how often to try before the thread sleeps.
  explicit CriticalSection(std::uint32_t spinCount);
  ~CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  /// The names that std::lock_guard expects.
  void lock();
  void unlock();

 private:
  alignas(8) std::byte storage_[48];
};

}  // namespace platform
