#include "platform/process_end.h"

namespace platform {
namespace {

constinit bool isUnloaded = false;

/// Unloading calls functions of this kind first and destroys static objects then; exit() does it the other way round.
__attribute__((destructor)) void NoteUnload() {
  isUnloaded = true;
}

}  // namespace

bool ProcessEnds() {
  return !isUnloaded;
}

}  // namespace platform
