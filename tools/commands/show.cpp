#include <fmt/format.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "tools/capture/capture_file.h"
#include "tools/capture/conversation.h"
#include "tools/capture/event_filter.h"
#include "tools/commands/commands.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {

namespace {

/// The end of a delivery is worth a line only where something went wrong; its time counts in `stats`.
bool IsWorthALine(const RecordedEvent& event) {
  return event.frame->header.event != capture::FrameEvent::kDelivered || event.failed;
}

std::string Line(const RecordedEvent& event, std::uint64_t start, bool times) {
  const capture::FrameHeader& header = event.frame->header;
  const bool toFinder = header.direction == capture::FrameDirection::kToFinder;
  const std::string took = header.event == capture::FrameEvent::kCall
                               ? fmt::format("{:.3f} ms", static_cast<double>(header.duration) / 1e6)
                               : "";
  const double seconds = static_cast<double>(static_cast<std::int64_t>(event.frame->GetStart() - start)) / 1e9;
  const std::chrono::nanoseconds sinceEpoch(event.frame->GetStart());
  const std::string time =
      times ? UtcTime(WallTime(std::chrono::duration_cast<WallTime::duration>(sinceEpoch))) + ' ' : "";
  return fmt::format("{}{:>11.6f} {:>5} {:>6} {} {:<38} {:>10}  {}\n", time, seconds, event.frame->number,
                     header.thread, toFinder ? "<-" : "->", event.what, took, event.outcome);
}

Json Object(const RecordedEvent& event) {
  const capture::FrameHeader& header = event.frame->header;
  Json object = {{"event", ShortName(*event.frame)},
                 {"packet", event.frame->number},
                 {"time", event.frame->time},
                 {"duration", header.duration},
                 {"thread", header.thread},
                 {"stream", fmt::format("{:#x}", header.stream)},
                 {"what", event.what},
                 {"failed", event.failed},
                 {"outcome", event.outcome}};
  if (event.block) object["messageType"] = header.messageType;
  if (!event.macs.empty()) object["macs"] = event.macs;
  if (!event.ips.empty()) object["ips"] = event.ips;
  return object;
}

}  // namespace

void RunShow(const Options& options, TextOutput& output) {
  if (options.capture.follow) platform::CatchInterrupts();
  CaptureFile file(options.capture.file,
                   options.capture.follow ? std::function<bool()>(platform::Interrupted) : std::function<bool()>());
  // Lines of a capture that still grows are seen as they come.
  const bool grows = options.capture.follow || options.capture.file == "-";
  CollectedOutput collected(output);
  TextOutput& lines = grows ? output : collected;
  Conversation conversation;
  std::uint64_t start = 0;
  const std::string note = ReadFrames(file, [&](const capture::Frame& frame) {
    if (start == 0) start = frame.GetStart();
    const RecordedEvent event = conversation.Read(frame);
    if (!Matches(event, options.capture.filters)) return;
    if (options.json)
      lines.Write(JsonLine(Object(event)));
    else if (IsWorthALine(event))
      lines.Write(Line(event, start, options.times));
  });
  collected.Flush();
  if (!note.empty()) platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", note));
}

}  // namespace tarnfind
