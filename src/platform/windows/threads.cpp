#include "platform/threads.h"

#include <atomic>
#include <limits>
#include <new>

#include "platform/windows/api.h"

/// The workers are threads of a pool that the system runs. Between tasks they are in the system's code, so the library
/// can be unloaded while they live. With threads that the library starts it could not: waiting for them under the
/// loader's lock dead-locks, and not waiting leaves them in code that is gone.
namespace platform {
namespace {

/// One hand-over at a time. The work item is made once and submitted for every task. Slots are kept until the unload,
/// as many as there were hand-overs at once: they are a few hundred bytes each, and the threads are the pool's.
struct alignas(MEMORY_ALLOCATION_ALIGNMENT) Slot {
  SLIST_ENTRY idle;  ///< first, so that its address is the slot's
  PTP_WORK work = nullptr;
  void (*task)(void*) = nullptr;
  void* context = nullptr;
  std::atomic<std::uint32_t> done{0};
};

/// Initialised with zeros, which is an empty list.
constinit SLIST_HEADER idleSlots{};
constinit std::atomic<PTP_POOL> pool{nullptr};

/// A pool of the library's own, because the default pool has at most 500 threads and waiting tasks nest without bound.
/// Null where there is no memory.
PTP_POOL Pool() {
  PTP_POOL existing = pool.load(std::memory_order_acquire);
  if (existing) return existing;
  const PTP_POOL made = CreateThreadpool(nullptr);
  if (!made) return nullptr;
  SetThreadpoolThreadMaximum(made, std::numeric_limits<LONG>::max());
  if (pool.compare_exchange_strong(existing, made, std::memory_order_acq_rel)) return made;
  CloseThreadpool(made);
  return existing;
}

/// Once done is set the deliverer may go on and use the slot again, even before it is woken, so the slot is not read
/// after that.
void CALLBACK RunTask(PTP_CALLBACK_INSTANCE, void* argument, PTP_WORK) {
  auto* const slot = static_cast<Slot*>(argument);
  slot->task(slot->context);
  slot->done.store(1, std::memory_order_release);
  WakeByAddressSingle(&slot->done);
}

Slot* NewSlot() {
  const PTP_POOL threads = Pool();
  Slot* const slot = threads ? new (std::nothrow) Slot : nullptr;
  if (!slot) return nullptr;
  TP_CALLBACK_ENVIRON environment;
  InitializeThreadpoolEnvironment(&environment);
  SetThreadpoolCallbackPool(&environment, threads);
  slot->work = CreateThreadpoolWork(RunTask, slot, &environment);
  if (slot->work) return slot;
  delete slot;
  return nullptr;
}

Slot* TakeIdleSlot() {
  return reinterpret_cast<Slot*>(InterlockedPopEntrySList(&idleSlots));
}

}  // namespace

std::uint32_t GetCurrentThreadId() {
  return ::GetCurrentThreadId();
}

/// Without the two lowest bits, which are the same in all numbers of threads.
std::uint32_t ThreadPlace() {
  return ::GetCurrentThreadId() >> 2;
}

bool RunOnWorkerAndWait(void (*task)(void*), void* context) {
  Slot* slot = TakeIdleSlot();
  if (!slot) slot = NewSlot();
  if (!slot) return false;
  slot->task = task;
  slot->context = context;
  slot->done.store(0, std::memory_order_relaxed);
  SubmitThreadpoolWork(slot->work);
  std::uint32_t notDone = 0;
  while (slot->done.load(std::memory_order_acquire) == notDone)
    WaitOnAddress(&slot->done, &notDone, sizeof notDone, INFINITE);
  InterlockedPushEntrySList(&idleSlots, &slot->idle);
  return true;
}

void StopWorkers() {
  while (Slot* const slot = TakeIdleSlot()) {
    // The callback may still be in the call that wakes its deliverer.
    WaitForThreadpoolWorkCallbacks(slot->work, FALSE);
    CloseThreadpoolWork(slot->work);
    delete slot;
  }
  if (const PTP_POOL unused = pool.exchange(nullptr, std::memory_order_acq_rel)) CloseThreadpool(unused);
}

}  // namespace platform
