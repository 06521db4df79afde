/// Writes one message of each level to the console, the debugger, the event log and the file that is named.
///
///     TARN_REGISTRY=diagnostics.reg TARN_DEBUGGER=stderr diagnostics_example lines.txt
#include <cstdio>
#include <exception>

#include "base/text_conversion.h"
#include "diagnostics/debug_out.h"
#include "diagnostics/debug_out_settings.h"
#include "diagnostics/debug_out_streamer.h"
#include "diagnostics/event_log.h"
#include "diagnostics/network_startup.h"

namespace {

/// What the library does at load and unload, as far as diagnostic output is concerned.
struct Diagnostics {
  Kestrel::AddressResolutionImport addressResolution;  ///< reports its failures before the mark, as "STATOUT: "
  Kestrel::DebugOutSettings settings;
  Kestrel::DebugOutReadyMark ready;

  ~Diagnostics() {
    Kestrel::DebugOutStreamer::Destroy();
    Kestrel::EventLog::Destroy();
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("diagnostics_example: name the file that the messages shall go to\n", stderr);
    return 2;
  }
  try {
    const Diagnostics diagnostics;
    using namespace Kestrel;
    const auto streamer = DebugOutStreamer::Get();

    streamer->SetOutputTargets(dotConsole | dotDebugWindow | dotFile | dotEventLog, otmReplace);
    if (!streamer->OpenOutputFile(Utf8ToWide(argv[1]).c_str())) {
      std::fprintf(stderr, "diagnostics_example: %s cannot be written; name another file\n", argv[1]);
      return 2;
    }
    for (const auto level : {dolError, dolSecurity, dolWarning, dolInfo, dolDebug})
      DebugOut("NET", level) << "Camera " << u"192.168.0.9" << " answered after " << 153 << " ms";
    DebugOut("NOISY", dolError) << "A filter of 0 silences this";
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "diagnostics_example: %s\n", exception.what());
    return 1;
  }
  return 0;
}
