#include "diagnostics/console_output_streamer.h"

#include <algorithm>
#include <iterator>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "diagnostics/debug_out_settings.h"
#include "platform/clock.h"
#include "platform/debugger.h"
#include "time/date_time_text.h"

namespace Kestrel {
namespace {

/// The most that a console takes in one call.
constexpr std::uint32_t kMostUnits = 65536;

/// Row = level: bright red, magenta, yellow and cyan.
constexpr std::uint16_t kColours[] = {12, 13, 14, 11};
constexpr std::uint16_t kGrey = 7;

struct TimeStampForm {
  std::uint32_t consoleTimeMode;
  std::uint32_t strMode;
};
constexpr TimeStampForm kTimeStampForms[] = {
    {ctmTime, dtsmTime},
    {ctmDayOfWeekAndTime, dtsmDateTime | dtsmDayOfWeek},
    {ctmDateAndTime, dtsmDateTime},
};

std::uint16_t ColourOf(std::uint32_t level) {
  return level < std::size(kColours) ? kColours[level] : kGrey;
}

std::u16string LocalTime(std::uint32_t strMode) {
  platform::SystemTime now;
  platform::GetLocalTime(&now);
  return SystemTimeToWideStr(now, strMode) + u' ';
}

std::u16string TimeStamp() {
  const DebugOutSettings* const settings = DebugOutSettings::Get();
  const std::uint32_t mode = settings ? settings->GetConsoleTimeMode() : ctmNone;
  const auto form = std::ranges::find(kTimeStampForms, mode, &TimeStampForm::consoleTimeMode);
  if (form == std::ranges::end(kTimeStampForms)) return {};
  try {
    return LocalTime(form->strMode);
  } catch (const KestrelException&) {  // the message counts more than its time
    return {};
  }
}

/// Sets the console's colour while the object lives. Where the previous colour is unknown, it is not restored.
class ConsoleColour {
 public:
  ConsoleColour(platform::ConsoleHandle console, std::uint16_t attributes)
      : console_(console), known_(platform::GetConsoleTextAttribute(console, &previous_)) {
    platform::SetConsoleTextAttribute(console_, attributes);
  }
  ~ConsoleColour() {
    if (known_) platform::SetConsoleTextAttribute(console_, previous_);
  }
  ConsoleColour(const ConsoleColour&) = delete;
  ConsoleColour& operator=(const ConsoleColour&) = delete;

 private:
  const platform::ConsoleHandle console_;
  std::uint16_t previous_ = kGrey;
  const bool known_;
};

platform::ConsoleHandle StandardHandle(std::uint32_t which, const char16_t* failure) {
  const platform::ConsoleHandle handle = platform::GetStdHandle(which);
  if (handle == platform::InvalidConsoleHandle()) platform::OutputDebugStringW(failure);
  return handle;
}

}  // namespace

ConsoleOutputStreamer::ConsoleOutputStreamer()
    : output_(StandardHandle(platform::STD_OUTPUT_HANDLE, u"ConsoleOutputStreamer::GetStdHandle STD_OUTPUT failed")),
      error_(StandardHandle(platform::STD_ERROR_HANDLE, u"ConsoleOutputStreamer::GetStdHandle STD_ERROR failed")) {}

void ConsoleOutputStreamer::Write(const DebugOutRecord& record, std::u16string_view text) {
  const platform::ConsoleHandle console = record.level == dolError ? error_ : output_;
  if (console == platform::InvalidConsoleHandle()) return;
  const std::u16string line = TimeStamp() + StandardLine(record, text);
  const std::uint32_t units = ClipSizeT(line.size(), kMostUnits);
  const ConsoleColour colour(console, ColourOf(record.level));
  platform::WriteConsoleW(console, line.data(), units);
}

void ConsoleOutputStreamer::Flush() {
  platform::FlushStandardOutput();
}

}  // namespace Kestrel
