#include "platform/critical_section.h"

#include <pthread.h>

#include <new>
#include <thread>

#include "platform/processor.h"

namespace platform {
namespace {

struct Lock {
  pthread_mutex_t mutex;
  std::uint32_t spinCount;
};

Lock& In(std::byte* storage) {
  return *std::launder(reinterpret_cast<Lock*>(storage));
}

}  // namespace

CriticalSection::CriticalSection(std::uint32_t spinCount) {
  static_assert(sizeof(Lock) <= sizeof storage_ && alignof(Lock) <= alignof(std::max_align_t));
  // With one processor no spinning, because the holder cannot run meanwhile.
  static const bool oneProcessor = std::thread::hardware_concurrency() == 1;
  auto* const lock = new (storage_) Lock{{}, oneProcessor ? 0 : spinCount};
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&lock->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

CriticalSection::~CriticalSection() {
  pthread_mutex_destroy(&In(storage_).mutex);
}

void CriticalSection::lock() {
  Lock& lock = In(storage_);
  if (pthread_mutex_trylock(&lock.mutex) == 0) return;
  for (std::uint32_t i = 0; i < lock.spinCount; ++i) {
    PauseInSpin();
    if (pthread_mutex_trylock(&lock.mutex) == 0) return;
  }
  pthread_mutex_lock(&lock.mutex);
}

void CriticalSection::unlock() {
  pthread_mutex_unlock(&In(storage_).mutex);
}

}  // namespace platform
