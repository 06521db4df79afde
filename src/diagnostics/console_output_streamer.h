/// Coloured lines on the console: errors on standard error, everything else on standard output. Redirected output gets
/// nothing, because it is no console.
#pragma once

#include "diagnostics/output_target.h"
#include "platform/console.h"

namespace Kestrel {

class ConsoleOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// A handle that cannot be had is reported to the debugger; lines for it are not written.
  ConsoleOutputStreamer();

  /// The line begins with the time stamp that the settings ask for (ConsoleTimeMode), unless the system cannot make it.
  void Write(const DebugOutRecord& record, std::u16string_view text) override;
  void Flush() override;

 private:
  platform::ConsoleHandle output_;
  platform::ConsoleHandle error_;
};

}  // namespace Kestrel
