#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "capture/frame_writer.h"
#include "capture/redaction.h"
#include "tools/capture/capture_file.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/replaced_file.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// Throws Failure where the file does not take everything.
class FileSink final : public capture::ByteSink {
 public:
  explicit FileSink(ReplacedFile& file) : file_(file) {}

  bool Append(std::span<const platform::BytePiece> pieces) override {
    for (const platform::BytePiece piece : pieces) file_.Write(piece);
    return true;
  }

 private:
  ReplacedFile& file_;
};

}  // namespace

void RunRedact(const Options& options, TextOutput& output) {
  const std::string& target = options.capture.target;
  CaptureFile file(options.capture.file);
  if (IsSameFile(options.capture.file, target)) throw WrongUse("the redacted capture must be another file");
  ReplacedFile redacted(target);
  FileSink sink(redacted);
  capture::FrameWriter writer(sink);
  std::uint64_t frames = 0, changed = 0;
  writer.WriteSectionStart();
  const std::string note = ReadFrames(file, [&](const capture::Frame& frame) {
    std::vector<std::uint8_t> body = frame.body;
    capture::FrameHeader header = frame.header;
    header.headerSize = sizeof header;
    if (capture::RedactBody(body)) {
      header.flags |= capture::kCredentialsReplaced;
      ++changed;
    }
    ++frames;
    capture::FrameParts parts;
    parts.AddEncoded(std::as_bytes(std::span(body)));
    writer.WriteFrame(header, frame.time, parts);
  });
  redacted.Finish();
  if (options.json) {
    Json summary = {{"event", "summary"}, {"command", "redact"}, {"frames", frames}, {"changed", changed}};
    if (!note.empty()) summary["note"] = note;
    output.Write(JsonLine(summary));
  } else {
    output.Write(fmt::format("{} with credentials out of {}{}{}\n", Counted(changed, "frame"), Counted(frames, "frame"),
                             note.empty() ? "" : "; ", note));
  }
}

}  // namespace tarnfind
