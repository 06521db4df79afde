/// Lines for the debugger's output window, perhaps with the name of a file in front, so that those of several programs
/// can be told apart.
#pragma once

#include <string>

#include "diagnostics/output_target.h"

namespace Kestrel {

class DebugWindowOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// The prefix is that of the settings as they are now; none where there are no settings.
  /// Throws SystemException with the context "GetModuleFileNameW" where the file's name cannot be had.
  DebugWindowOutputStreamer();

  void Write(const DebugOutRecord& record, const std::u16string& text) override;

 private:
  const std::u16string prefix_;
};

}  // namespace Kestrel
