#include "platform/process_end.h"

#include "platform/compiler.h"

namespace platform {
namespace {

constinit bool isUnloaded = false;

/// An unload calls this function before it destroys the static objects; exit() calls it after that.
TARN_AT_UNLOAD void NoteUnload() {
  isUnloaded = true;
}

}  // namespace

bool ProcessEnds() {
  return !isUnloaded;
}

}  // namespace platform
