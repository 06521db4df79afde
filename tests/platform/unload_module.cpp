// A library that hands over work and stops its workers when it is unloaded. It prints that the process ends, because a
// program may be linked with it.
#include <cstdio>

#include "platform/process_end.h"
#include "platform/threads.h"

extern "C" int HandOver(int times) {
  platform::WatchExit();
  int runs = 0;
  for (int i = 0; i < times; ++i)
    if (!platform::RunOnWorkerAndWait([](void* context) { ++*static_cast<int*>(context); }, &runs)) return -1;
  return runs;
}

namespace {

struct Module {
  ~Module() {
    if (platform::ProcessEnds())
      std::puts("the process ends");
    else
      platform::StopWorkers();
  }
} module;

}  // namespace
