/// Lines for the system's event log: errors as errors, warnings as warnings, every other level as information.
#pragma once

#include "diagnostics/output_target.h"

namespace Kestrel {

class EventlogOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// Throws what EventLog::Write throws.
  void Write(const DebugOutRecord& record, std::u16string_view text) override;
};

}  // namespace Kestrel
