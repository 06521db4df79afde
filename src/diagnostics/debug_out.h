/// Kestrel::DebugOut: one diagnostic message, collected with << and written when the object ends.
///
///     DebugOut("NET", dolWarning) << "Camera " << address << " answered after " << milliseconds << " ms";
///
/// The filter is asked when the statement is made, if the settings exist by then. A message that does not pass is never
/// formatted and allocates nothing.
///
/// Errors: Making a statement throws what making the dispatcher and widening the source throw, << what allocating
/// throws, and Finish what a target throws. The destructor swallows everything.
/// Threads: A statement belongs to one thread. Statements of several threads may be finished at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/append_text.h"
#include "base/reference_counting.h"
#include "diagnostics/debug_out_settings.h"
#include "diagnostics/debug_out_streamer.h"
#include "diagnostics/output_target.h"

namespace Kestrel {

class DebugOut final : public ReferenceCounted {
 public:
  /// source may be null; it must outlive the statement. level is a DebugOutLevel, flags are DebugOutTarget flags.
  DebugOut(const char* source, std::uint32_t level, std::uint32_t flags = dotDefault) {
    if (Passes(source, level)) Begin(source, level, flags);
  }
  /// Finishes the statement unless that has been done.
  ~DebugOut() override {
    if (message_) FinishQuietly();
  }

  /// Appends a value as append_text.h describes.
  template <class Value>
  DebugOut& operator<<(const Value& value) {
    if (message_) AppendText(message_->line.whole, value);
    return *this;
  }

  /// Writes the text; the statement then takes nothing more. Throws SystemException where a target cannot learn the
  /// name of a module.
  void Finish();

 private:
  struct Message {
    DebugOutRecord record;
    std::uint32_t flags;
    ReferencePointer<DebugOutStreamer> streamer;
    HistoryLine line;
  };

  static bool Passes(const char* source, std::uint32_t level) {
    const DebugOutSettings* const settings = DebugOutSettings::Get();
    return !settings || settings->IsEnabled(source, level);
  }

  void Begin(const char* source, std::uint32_t level, std::uint32_t flags);
  void FinishQuietly();

  std::optional<Message> message_;  ///< none in a statement that does not pass, or is finished
};

}  // namespace Kestrel
