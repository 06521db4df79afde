#include "fakes/fake_threads.h"

#include <functional>
#include <thread>

#include "platform/threads.h"

namespace platform {

std::uint32_t GetCurrentThreadId() {
  return static_cast<std::uint32_t>(std::hash<std::thread::id>()(std::this_thread::get_id()));
}

bool RunOnWorkerAndWait(void (*task)(void*), void* context) {
  if (fakes::refuseHandOvers) return false;
  ++fakes::handOvers;
  std::thread(task, context).join();
  return true;
}

void StopWorkers() {}

}  // namespace platform
