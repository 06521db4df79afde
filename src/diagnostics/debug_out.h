/// Kestrel::DebugOut: one diagnostic message, collected with << and written when the object ends.
///
///     DebugOut("NET", dolWarning) << "Camera " << address << " answered after " << milliseconds << " ms";
///
/// Whether it passes the filter is decided at creation where the settings are there already; a message that does not is
/// never formatted and costs next to nothing. A statement belongs to one thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/append_text.h"
#include "base/reference_counting.h"
#include "diagnostics/debug_out_settings.h"
#include "diagnostics/debug_out_streamer.h"
#include "diagnostics/output_target.h"

namespace Kestrel {

class DebugOut final : public ReferenceCounted {
 public:
  /// source may be null; it must outlive the statement. level is a DebugOutLevel, flags are of DebugOutTarget.
  /// May make the dispatcher, and throws what that throws.
  DebugOut(const char* source, std::uint32_t level, std::uint32_t flags = dotDefault) {
    if (Passes(source, level)) Begin(source, level, flags);
  }
  /// Finishes the statement. What a target throws then is lost.
  ~DebugOut() override {
    if (message_) FinishQuietly();
  }

  /// Appends a value as append_text.h describes.
  template <class Value>
  DebugOut& operator<<(const Value& value) {
    if (message_) AppendText(message_->text, value);
    return *this;
  }

  /// Writes what has been collected; the statement then takes nothing more. Throws SystemException where a target
  /// cannot learn the name of a module.
  void Finish();

 private:
  struct Message {
    DebugOutRecord record;
    std::uint32_t flags;
    ReferencePointer<DebugOutStreamer> streamer;
    std::u16string text;
  };

  static bool Passes(const char* source, std::uint32_t level) {
    const DebugOutSettings* const settings = DebugOutSettings::Get();
    return !settings || settings->IsEnabled(source, level);
  }

  void Begin(const char* source, std::uint32_t level, std::uint32_t flags);
  void FinishQuietly();

  std::unique_ptr<Message> message_;  ///< none in a statement that does not pass, or is finished
};

}  // namespace Kestrel
