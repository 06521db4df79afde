#include "tools/wait_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/display_width.h"
#include "tools/platform.h"

namespace tarnfind {

namespace {
constexpr std::chrono::milliseconds kQuiet{400};
constexpr char kWipe[] = "\r\x1b[K";
}  // namespace

WaitLine::WaitLine(std::string what)
    : what_(std::move(what)), terminal_(platform::IsTerminal(platform::Stream::kError)) {}

WaitLine::~WaitLine() {
  if (!shown_.empty()) platform::Write(platform::Stream::kError, kWipe);
}

void WaitLine::Update() {
  const auto elapsed = Clock::now() - start_;
  if (!terminal_ || elapsed < kQuiet) return;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
  // Clipped to one line, because kWipe clears no more.
  const int columns = platform::GetTerminalSize(platform::Stream::kError).columns;
  std::string line = ClipToWidth(fmt::format("{} … {} s (Ctrl-C ends)", what_, seconds),
                                 static_cast<std::size_t>(std::max(columns - 1, 1)));
  if (line == shown_) return;
  platform::Write(platform::Stream::kError, kWipe + line);
  shown_ = std::move(line);
}

}  // namespace tarnfind
