#include "platform/process_end.h"

#include "platform/windows/api.h"

namespace platform {
namespace {

constinit bool processEnds = false;

}  // namespace

bool ProcessEnds() {
  return processEnds;
}

void WatchExit() {}

}  // namespace platform

/// Runs before the library's destructors. reserved is null where the library is unloaded, and not null at the end of
/// the process.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* reserved) {
  if (reason == DLL_PROCESS_DETACH && reserved) platform::processEnds = true;
  return TRUE;
}
