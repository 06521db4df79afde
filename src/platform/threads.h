/// Threads: who is calling, and work handed to another thread.
///
/// Hand-over: a delivery thread gives one task to an idle worker and sleeps until it is done. Idle workers are kept and
/// woken; there are as many as hand-overs in progress, for a task may cause another one and wait for it.
#pragma once

#include <cstdint>

namespace platform {

std::uint32_t GetCurrentThreadId();

/// Runs task(context) on a thread other than the caller's and returns when it has returned. The task must not throw.
/// Does not allocate and creates no thread while an idle worker is there. False where no worker could be had (no memory
/// or no thread); the task has then not run.
[[nodiscard]] bool RunOnWorkerAndWait(void (*task)(void*), void* context);

/// For the module's unload, after the last hand-over has returned: when it returns, no thread is left inside the
/// library's code. Not for the end of the process (process_end.h).
void StopWorkers();

}  // namespace platform
