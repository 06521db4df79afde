#include "platform/process_end.h"

#include <atomic>
#include <cstdlib>

#include "platform/compiler.h"
#include "platform/modules.h"

namespace platform {
namespace {

constinit bool isUnloaded = false;
constinit bool isExiting = false;
constinit std::atomic<bool> isWatching = false;

/// An unload calls this function before anything else of the library. exit() calls it after the static objects of a
/// library that was loaded by the running program, and before those of a library that the program is linked with.
TARN_AT_UNLOAD void NoteUnload() {
  isUnloaded = true;
}

/// exit() calls functions in the reverse order of their registration. This one comes later than the loader's, so it is
/// called before NoteUnload. From here on the library stays loaded, although a later function may close it.
void NoteExit() {
  if (isUnloaded) return;
  isExiting = true;
  ReferenceThisModule();
}

}  // namespace

bool ProcessEnds() {
  return isExiting || !isUnloaded;
}

void WatchExit() {
  if (!isWatching.load(std::memory_order_relaxed) && !isWatching.exchange(true)) std::atexit(NoteExit);
}

}  // namespace platform
