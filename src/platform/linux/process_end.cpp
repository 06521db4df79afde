#include "platform/process_end.h"

#include "platform/compiler.h"
#include "platform/modules.h"

namespace platform {
namespace {

constinit bool isUnloaded = false;
constinit bool isExiting = false;

/// An unload calls this function before anything else of the library. exit() calls it after the static objects of a
/// library that was loaded by the running program, and before those of a library that the program is linked with.
TARN_AT_UNLOAD void NoteUnload() {
  isUnloaded = true;
}

/// exit() goes backwards through what was made and registered. An object that is made after the loader's own function
/// was registered goes before NoteUnload is called. From there on the library stays loaded, although a later function
/// may close it.
struct ExitNote {
  ~ExitNote() {
    if (isUnloaded) return;
    isExiting = true;
    ReferenceThisModule();
  }
};

}  // namespace

bool ProcessEnds() {
  return isExiting || !isUnloaded;
}

void WatchExit() {
  static const ExitNote note;
}

}  // namespace platform
