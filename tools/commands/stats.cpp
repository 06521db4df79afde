#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>

#include "tools/capture/capture_file.h"
#include "tools/capture/conversation.h"
#include "tools/commands/commands.h"
#include "tools/json_objects.h"
#include "tools/platform.h"

namespace tarnfind {

namespace {

/// Upper ends of the columns of a histogram, in nanoseconds; the last one takes the rest.
struct LatencyColumn {
  std::uint64_t below;
  const char* name;
};
constexpr auto kColumns = std::to_array<LatencyColumn>({
    {10'000, "10us"},
    {100'000, "100us"},
    {1'000'000, "1ms"},
    {10'000'000, "10ms"},
    {100'000'000, "100ms"},
    {1'000'000'000, "1s"},
    {10'000'000'000, "10s"},
    {UINT64_MAX, "more"},
});

/// Of one command, function or block type.
struct Row {
  std::uint64_t count = 0;
  std::uint64_t failed = 0;
  std::uint64_t bytes = 0;
  std::uint64_t most = 0;
  std::uint64_t timed = 0;
  std::uint64_t total = 0;
  std::uint64_t longest = 0;
  std::array<std::uint64_t, kColumns.size()> histogram{};

  void AddTime(std::uint64_t nanoseconds) {
    ++timed;
    total += nanoseconds;
    longest = std::max(longest, nanoseconds);
    ++histogram[static_cast<std::size_t>(
        std::ranges::find_if(kColumns, [&](const LatencyColumn& column) { return nanoseconds < column.below; }) -
        kColumns.begin())];
  }
};

/// Limits, because a damaged file can name anything. Further rows count as "other"; further deliveries are not timed.
constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostThreads = 1000;
constexpr std::size_t kMostNested = 1000;

/// The deliveries on one thread, which end in the reverse order of their beginning.
class Deliveries {
 public:
  void Begin(const std::string& name) {
    if (names_.size() < kMostNested)
      names_.push_back(name);
    else
      ++unnamed_;
  }
  /// The name of the one that ends; empty for one beyond the limit. Requires one that has begun.
  std::string End() {
    if (unnamed_ > 0) return --unnamed_, std::string();
    std::string name = std::move(names_.back());
    names_.pop_back();
    return name;
  }
  bool AllEnded() const { return names_.empty(); }

 private:
  std::vector<std::string> names_;
  std::uint64_t unnamed_ = 0;
};

class Statistics {
 public:
  void Add(const RecordedEvent& event) {
    const capture::FrameHeader& header = event.frame->header;
    if (header.event == capture::FrameEvent::kDelivered) return AddDelivery(header);
    const std::string name = event.block     ? fmt::format("block type {}", header.messageType)
                             : event.command ? "command " + event.command->name
                                             : ShortName(*event.frame);
    Row& row = RowOf(name);
    ++row.count;
    row.failed += event.failed;
    std::uint64_t bytes = 0;
    for (const auto kind : {capture::PartKind::kRequest, capture::PartKind::kReply, capture::PartKind::kBlock})
      bytes += event.frame->Find(kind).value_or(std::span<const std::uint8_t>()).size();
    row.bytes += bytes;
    row.most = std::max(row.most, bytes);
    if (!event.block)
      row.AddTime(header.duration);
    else if (open_.size() < kMostThreads || open_.contains(header.thread))
      open_[header.thread].Begin(name);
  }

  const std::map<std::string, Row>& GetRows() const { return rows_; }

 private:
  void AddDelivery(const capture::FrameHeader& header) {
    const auto open = open_.find(header.thread);
    if (open == open_.end()) return;
    if (const std::string name = open->second.End(); !name.empty()) RowOf(name).AddTime(header.duration);
    if (open->second.AllEnded()) open_.erase(open);
  }
  Row& RowOf(const std::string& name) {
    return rows_.size() < kMostRows || rows_.contains(name) ? rows_[name] : rows_["other"];
  }

  std::map<std::string, Row> rows_;
  std::map<std::uint32_t, Deliveries> open_;  ///< under way, by thread
};

std::string Bars(const Row& row) {
  constexpr const char* kBars[] = {"·", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  const std::uint64_t most = std::max<std::uint64_t>(1, *std::ranges::max_element(row.histogram));
  std::string bars;
  for (const std::uint64_t count : row.histogram) bars += kBars[(count * 8 + most - 1) / most];
  return bars;
}

double Milliseconds(std::uint64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / 1e6;
}

void WriteTable(const Statistics& statistics, TextOutput& output) {
  std::string columns;
  for (const LatencyColumn& column : kColumns) columns += fmt::format("{}{}", columns.empty() ? "" : " ", column.name);
  output.Write(fmt::format("{:<28} {:>7} {:>7} {:>10} {:>9} {:>11} {:>11}  {}\n", "", "count", "failed", "bytes",
                           "largest", "mean ms", "longest ms", "times"));
  for (const auto& [name, row] : statistics.GetRows())
    output.Write(fmt::format("{:<28} {:>7} {:>7} {:>10} {:>9} {:>11.3f} {:>11.3f}  {}\n", name, row.count, row.failed,
                             row.bytes, row.most, row.timed ? Milliseconds(row.total / row.timed) : 0.0,
                             Milliseconds(row.longest), row.timed ? Bars(row) : ""));
  output.Write(
      fmt::format("Times: one bar each for what took less than {}; a block's is that of its delivery.\n", columns));
}

void WriteObjects(const Statistics& statistics, TextOutput& output) {
  for (const auto& [name, row] : statistics.GetRows()) {
    Json histogram = Json::object();
    for (std::size_t i = 0; i < kColumns.size(); ++i) histogram[kColumns[i].name] = row.histogram[i];
    output.Write(JsonLine({{"event", "stats"},
                           {"name", name},
                           {"count", row.count},
                           {"failed", row.failed},
                           {"bytes", row.bytes},
                           {"largest", row.most},
                           {"timed", row.timed},
                           {"totalTime", row.total},
                           {"longestTime", row.longest},
                           {"histogram", histogram}}));
  }
}

}  // namespace

void RunStats(const Options& options, TextOutput& output) {
  CaptureFile file(options.capture.file);
  Conversation conversation;
  Statistics statistics;
  const std::string note =
      ReadFrames(file, [&](const capture::Frame& frame) { statistics.Add(conversation.Read(frame)); });
  options.json ? WriteObjects(statistics, output) : WriteTable(statistics, output);
  if (!note.empty()) platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", note));
}

}  // namespace tarnfind
