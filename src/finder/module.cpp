/// Load and unload: the one object of the library that lives from the one to the other.
#include <new>

#include "base/exception_history.h"
#include "base/text_conversion.h"
#include "diagnostics/debug_out_settings.h"
#include "diagnostics/debug_out_streamer.h"
#include "diagnostics/event_log.h"
#include "diagnostics/network_startup.h"
#include "platform/process_end.h"
#include "platform/threads.h"
#include "time/date_time.h"
#include "valuelist/buffer_pool.h"

namespace {

/// A step of the load that leaves nothing to undo. What it has no memory for is left out.
struct Step {
  explicit Step(void (*run)()) {
    try {
      run();
    } catch (const std::bad_alloc&) {
    }
  }
};

/// The members are made in this order when the library is loaded, and go in reverse when it is unloaded. Both happen
/// under the loader's lock, so no other lock is taken here but critical sections.
///
/// A failing step does not keep the library from being loaded, except that the clock must answer.
class Module {
 public:
  Module() = default;
  /// Ends what was made on first use, before the members go.
  ~Module() {
    platform::StopWorkers();
    Kestrel::BufferPool::DestroySharedPool();
    Kestrel::DebugOutStreamer::Destroy();
    Kestrel::EventLog::Destroy();
  }

 private:
  Kestrel::ExceptionHistory exceptionHistory_;
  /// The first conversion in the ANSI code page may load a module of the C library, which takes the loader's lock. That
  /// must not happen in a delivery, because a thread may wait for its callback with that lock held.
  Step ansiCodePage_{[] { Kestrel::AnsiToWideOrAscii("\x80"); }};
  Step socketSettings_{Kestrel::ReadSocketSettings};
  Step timerFrequency_{[] { Kestrel::GetKestrelTimerFrequency(); }};
  Kestrel::SocketStartup socketStartup_;
  Kestrel::SocketStartup addressResolutionStartup_;
  Kestrel::AddressResolutionImport addressResolution_;
  Step hostName_{Kestrel::LookUpHostName};
  Kestrel::DebugOutSettings debugOutSettings_;
  Kestrel::DebugOutReadyMark debugOutReadyMark_;
};

/// Where the module lives. At the end of the process it stays as it is, for the reasons in process_end.h.
union ModulePlace {
  ModulePlace() : module() {}
  ~ModulePlace() {
    if (!platform::ProcessEnds()) module.~Module();
  }
  Module module;
};

ModulePlace place;

}  // namespace
