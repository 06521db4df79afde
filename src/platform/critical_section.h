/// A recursive lock that spins before it sleeps. Requires that nobody holds it when it is destroyed. Does not throw.
///
/// On Windows no thread hangs in it while the process ends, when the thread that held it is dead: the system ends the
/// process there (Wine lets the thread in). A mutex of the standard library blocks for ever. So every lock that may be
/// taken then is one of these, and nothing that must be done may stand behind it.
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
  alignas(8) std::byte storage_[40];
};

}  // namespace platform
