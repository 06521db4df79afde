#include "tools/wait_line.h"

#include <fmt/format.h>

#include <utility>

#include "tools/platform.h"

namespace tarnfind {

namespace {
constexpr std::chrono::milliseconds kQuiet{400};
constexpr char kWipe[] = "\r\x1b[K";
}  // namespace

WaitLine::WaitLine(std::string what)
    : what_(std::move(what)), terminal_(platform::IsTerminal(platform::Stream::kError)) {}

WaitLine::~WaitLine() {
  if (shown_) platform::Write(platform::Stream::kError, kWipe);
}

void WaitLine::Update() {
  const auto elapsed = Clock::now() - start_;
  if (!terminal_ || elapsed < kQuiet) return;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed).count();
  platform::Write(platform::Stream::kError, fmt::format("{}{} … {} s (Ctrl-C ends)", kWipe, what_, seconds));
  shown_ = true;
}

}  // namespace tarnfind
