#include "tools/page/page_lines.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tarnfind {

namespace {

constexpr std::size_t kMostTakenBytes = 256 << 10;

}  // namespace

PageLines::PageLines(std::function<void()> onChange, std::size_t mostBytes)
    : onChange_(std::move(onChange)), mostBytes_(mostBytes) {}

void PageLines::Add(std::string_view line, std::string_view subject) {
  {
    const std::lock_guard lock(mutex_);
    if (!subject.empty()) {
      const auto [newest, first] = newestOf_.try_emplace(std::string(subject), next_);
      // Trimming has kept the subject's line before this one only because it was the newest.
      const std::uint64_t before = std::exchange(newest->second, next_);
      if (!first && before < trimmed_) Drop(lines_.find(before));
    }
    lines_.emplace_hint(lines_.end(), next_++, Line{std::string(line), std::string(subject)});
    bytes_ += line.size();
    Trim();
  }
  if (onChange_) onChange_();
}

void PageLines::Drop(std::map<std::uint64_t, Line>::iterator line) {
  bytes_ -= line->second.text.size();
  lines_.erase(line);
}

void PageLines::Trim() {
  const auto isNewest = [&](const auto& line) {
    const auto newest = newestOf_.find(line.second.subject);
    return newest != newestOf_.end() && newest->second == line.first;
  };
  while (bytes_ > mostBytes_ && trimmed_ < next_) {
    const auto line = lines_.find(trimmed_++);
    if (line != lines_.end() && !isNewest(*line)) Drop(line);
  }
  while (bytes_ > mostBytes_ && lines_.size() > 1) {
    newestOf_.erase(lines_.begin()->second.subject);
    Drop(lines_.begin());
  }
}

void PageLines::SetState(std::string line) {
  {
    const std::lock_guard lock(mutex_);
    state_ = std::move(line);
    ++stateNumber_;
  }
  if (onChange_) onChange_();
}

void PageLines::Finish() {
  {
    const std::lock_guard lock(mutex_);
    finished_ = true;
  }
  if (onChange_) onChange_();
}

std::string PageLines::Take(Reader& reader) const {
  const std::lock_guard lock(mutex_);
  std::string taken;
  std::uint64_t missing = 0;
  if (reader.next == 0) {
    reader.replayEnd = next_;
    missing = next_ - lines_.size();
  }
  auto line = lines_.lower_bound(reader.next);
  for (; line != lines_.end() && taken.size() < kMostTakenBytes; ++line) {
    if (line->first >= reader.replayEnd) missing += line->first - std::max(reader.next, reader.replayEnd);
    taken += line->second.text;
    reader.next = line->first + 1;
  }
  if (line == lines_.end()) {
    missing += next_ - std::max(reader.next, reader.replayEnd);
    reader.next = next_;
    if (!finished_ && std::exchange(reader.state, stateNumber_) != stateNumber_) taken += state_;
  }
  if (missing > 0) taken.insert(0, fmt::format("{{\"event\":\"omitted\",\"lines\":{}}}\n", missing));
  return taken;
}

bool PageLines::IsAtEnd(const Reader& reader) const {
  const std::lock_guard lock(mutex_);
  return finished_ && reader.next == next_;
}

}  // namespace tarnfind
