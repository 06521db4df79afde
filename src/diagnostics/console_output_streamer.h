/// Coloured lines on the console: errors on standard error, everything else on standard output. Output that has been
/// redirected is no console and gets nothing.
#pragma once

#include "diagnostics/output_target.h"
#include "platform/console.h"

namespace Kestrel {

class ConsoleOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// A failing look-up of a handle is reported to the debugger; lines for that handle are then not written.
  ConsoleOutputStreamer();

  /// The line's time stamp is that of DebugOutSettings' console time mode, left out where the system cannot make it.
  void Write(const DebugOutRecord& record, const std::u16string& text) override;
  void Flush() override;

 private:
  platform::ConsoleHandle output_;
  platform::ConsoleHandle error_;
};

}  // namespace Kestrel
