#include "diagnostics/debug_window_output_streamer.h"

#include "diagnostics/debug_out_settings.h"
#include "diagnostics/module_file_name.h"
#include "platform/debugger.h"
#include "platform/modules.h"

namespace Kestrel {
namespace {

/// An address inside the library.
const char libraryAnchor = 0;

std::u16string Prefix() {
  const DebugOutSettings* const settings = DebugOutSettings::Get();
  const std::uint32_t kind = settings ? settings->GetDebugWindowSourcePrefix() : spNone;
  if (kind == spNone) return {};
  return ModuleFileName(kind == spModule ? platform::ModuleContaining(&libraryAnchor) : nullptr) + u':';
}

}  // namespace

DebugWindowOutputStreamer::DebugWindowOutputStreamer() : prefix_(Prefix()) {}

void DebugWindowOutputStreamer::Write(const DebugOutRecord& record, std::u16string_view text) {
  platform::OutputDebugStringW((prefix_ + StandardLine(record, text)).c_str());
}

}  // namespace Kestrel
