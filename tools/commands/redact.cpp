#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "capture/frame_writer.h"
#include "capture/redaction.h"
#include "tools/capture/capture_file.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

class FileSink final : public capture::ByteSink {
 public:
  explicit FileSink(const std::string& path) : file_(PathFromUtf8(path), std::ios::binary | std::ios::trunc) {}

  bool Append(std::span<const platform::BytePiece> pieces) override {
    for (const platform::BytePiece piece : pieces)
      file_.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(piece.size()));
    return static_cast<bool>(file_);
  }
  bool Close() {
    file_.close();
    return static_cast<bool>(file_);
  }

 private:
  std::ofstream file_;
};

bool IsSameFile(const std::string& first, const std::string& second) {
  std::error_code none;
  return std::filesystem::equivalent(PathFromUtf8(first), PathFromUtf8(second), none);
}

}  // namespace

void RunRedact(const Options& options, TextOutput& output) {
  const std::string& target = options.capture.target;
  CaptureFile file(options.capture.file);
  if (IsSameFile(options.capture.file, target)) throw WrongUse("the redacted capture must be another file");
  FileSink sink(target);
  capture::FrameWriter writer(sink);
  std::uint64_t frames = 0, changed = 0;
  bool written = writer.WriteSectionStart();
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
    written = written && writer.WriteFrame(header, frame.time, parts);
  });
  if (!sink.Close() || !written) throw Failure(fmt::format("{} cannot be written", Printable(target)));
  if (options.json)
    output.Write(JsonLine({{"event", "summary"}, {"command", "redact"}, {"frames", frames}, {"changed", changed}}));
  else
    output.Write(fmt::format("{} with credentials out of {}{}{}\n", Counted(changed, "frame"), Counted(frames, "frame"),
                             note.empty() ? "" : "; ", note));
}

}  // namespace tarnfind
