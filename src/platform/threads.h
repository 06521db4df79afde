/// The number of the calling thread, and work that is handed to another thread.
///
/// A delivery thread hands over one task and sleeps until it is done. There are as many busy workers as hand-overs in
/// progress, because a task may cause another hand-over and wait for it. A worker that becomes idle is kept for the
/// next task. On Linux up to 16 idle ones are kept; the deliverer ends the others before its call returns. On Windows
/// the workers are threads of a pool that the system runs; it ends idle ones after a while.
///
/// On Linux workers block the signals that are for the host's own threads; those of a fault, an abort and a profiler
/// stay open. After a fork the child has no workers and makes new ones.
#pragma once

#include <cstdint>

namespace platform {

/// The system's number of the calling thread.
std::uint32_t GetCurrentThreadId();

/// A number of the calling thread that costs almost nothing to ask. Threads that start one after the other mostly have
/// different ones modulo a small power of two, so it spreads threads over a few places.
std::uint32_t ThreadPlace();

/// Runs task(context) on a thread other than the caller's and returns when it has returned. The task must not throw.
/// Creates no thread and allocates nothing while an idle worker is there. Callable on any thread, also inside a task.
/// False where no worker could be had (no memory or no thread); the task has then not run.
[[nodiscard]] bool RunOnWorkerAndWait(void (*task)(void*), void* context);

/// For the module's unload: when it returns, no worker is left inside the library's code. Requires that every hand-over
/// has returned, and is not for the end of the process (process_end.h). The next hand-over starts anew.
void StopWorkers();

}  // namespace platform
