/// Lines for the debugger's output window. The name of a file may stand in front, so that the lines of several programs
/// can be told apart.
#pragma once

#include <string>
#include <string_view>

#include "diagnostics/output_target.h"

namespace Kestrel {

class DebugWindowOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// The prefix is the one that the settings ask for at this moment (SourcePrefix); without settings there is none.
  /// Throws SystemException with the context "GetModuleFileNameW" where the name of the file is unknown.
  DebugWindowOutputStreamer();

  void Write(const DebugOutRecord& record, std::u16string_view text) override;

 private:
  const std::u16string prefix_;
};

}  // namespace Kestrel
