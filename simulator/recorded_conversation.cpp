#include "simulator/recorded_conversation.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "capture/capture_reader.h"
#include "capture/redaction.h"
#include "platform/debugger.h"
#include "protocol/block_format.h"
#include "protocol/finder_messages.h"
#include "protocol/request_wire.h"
#include "simulator/json_document.h"

namespace simulator {
namespace {

using capture::Frame;
using capture::PartKind;

/// Each failed or slow call becomes a fault. Calls beyond this number go as usual.
constexpr std::size_t kMostFaults = 10'000;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;

class StringSource final : public capture::ByteSource {
 public:
  explicit StringSource(std::string_view rest) : rest_(rest) {}
  std::size_t Read(void* target, std::size_t size) override {
    const std::string_view taken = rest_.substr(0, size);
    if (!taken.empty()) std::memcpy(target, taken.data(), taken.size());
    rest_.remove_prefix(taken.size());
    return taken.size();
  }

 private:
  std::string_view rest_;
};

std::vector<std::uint8_t> PartOf(const Frame& frame, PartKind kind) {
  const auto part = frame.Find(kind).value_or(std::span<const std::uint8_t>());
  return {part.begin(), part.end()};
}

/// The command's code; 0 where the request holds none.
std::uint32_t CodeOf(std::span<const std::uint8_t> request) {
  std::uint32_t code = 0;
  try {
    Kestrel::ValueList command;
    Tarn::CameraFinding::DecodeRequest(request, command);
    command.Get(Tarn::CameraFinding::kCommandKey, code);
  } catch (const Kestrel::KestrelException&) {  // cannot be read, so it holds no command
  }
  return code;
}

std::vector<std::uint8_t> WithoutCredentials(std::span<const std::uint8_t> request) {
  std::vector<std::uint8_t> copy(request.begin(), request.end());
  capture::RedactPart(PartKind::kRequest, copy);
  return copy;
}

std::uint32_t Milliseconds(std::uint64_t nanoseconds) {
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(nanoseconds / kNanosecondsPerMillisecond, std::numeric_limits<std::uint32_t>::max()));
}

/// Takes the frames of a capture in their order.
class Player {
 public:
  void Add(const Frame& frame) {
    const capture::FrameHeader& header = frame.header;
    if (header.event == capture::FrameEvent::kBlock) return AddBlock(frame);
    if (header.event != capture::FrameEvent::kCall || header.function >= kFunctions.size()) return;
    const auto function = static_cast<Function>(header.function);
    if (function == Function::kGetLastError) return AddError(frame);
    if (function == Function::kCreateLiveStream && header.result) open_[header.stream] = AddStream();
    AddOutcome(frame, function);
    if (function == Function::kSetGenericDataCallback && header.result) StreamOf(header.stream).Register(frame.time);
    if (function == Function::kSendSynchDSPCommand) {
      auto request = WithoutCredentials(PartOf(frame, PartKind::kRequest));
      const std::uint32_t code = CodeOf(request);
      StreamOf(header.stream)
          .recorded.commands.push_back({frame.number, code, std::move(request), PartOf(frame, PartKind::kReply)});
    }
  }

  Scenario Finish(double speed) {
    Scenario scenario;
    scenario.speed = speed;
    scenario.functionFaults = std::move(faults_);
    auto streams = std::make_shared<std::vector<RecordedStream>>();
    for (Stream& stream : streams_) streams->push_back(std::move(stream.recorded));
    scenario.recording = std::move(streams);
    return scenario;
  }

 private:
  struct Stream {
    RecordedStream recorded;
    std::uint64_t registeredAt = 0;

    void Register(std::uint64_t time) {
      if (registeredAt == 0) registeredAt = time;
    }
  };

  std::size_t AddStream() {
    streams_.emplace_back();
    return streams_.size() - 1;
  }
  /// The stream of a handle. Adds one where the capture began after the stream was created.
  Stream& StreamOf(std::uint64_t handle) {
    const auto found = open_.find(handle);
    return streams_[found == open_.end() ? (open_[handle] = AddStream()) : found->second];
  }

  void AddBlock(const Frame& frame) {
    const auto arguments = frame.GetArguments();
    if (arguments.empty() || static_cast<std::int32_t>(arguments[0]) != Tarn::CameraFinding::kFinderBlockKind) return;
    Stream& stream = StreamOf(frame.header.stream);
    stream.Register(frame.time);
    const auto type = static_cast<Tarn::CameraFinding::FinderMessageType>(frame.header.messageType);
    const std::uint64_t since = frame.time - std::min(frame.time, stream.registeredAt);
    stream.recorded.blocks.push_back({Milliseconds(since), {type, PartOf(frame, PartKind::kBlock)}});
  }

  void AddOutcome(const Frame& frame, Function function) {
    const std::uint64_t number = ++calls_[function];
    lastFailure_.erase(frame.header.thread);
    const bool slow = frame.header.duration >= kNanosecondsPerMillisecond;
    if ((frame.header.result && !slow) || faults_.size() == kMostFaults) return;
    FunctionFault fault;
    fault.function = function;
    fault.call = {number, false};
    fault.delayMs = Milliseconds(frame.header.duration);
    if (!frame.header.result) {
      fault.outcome = Outcome::kFailsWithoutRecord;
      lastFailure_[frame.header.thread] = faults_.size();
    }
    faults_.push_back(std::move(fault));
  }

  /// Gives the error record to the last failure on its thread.
  void AddError(const Frame& frame) {
    const auto failure = lastFailure_.find(frame.header.thread);
    const auto part = frame.Find(PartKind::kError);
    const auto record = part ? capture::ReadErrorRecord(*part) : std::nullopt;
    if (failure == lastFailure_.end() || !record) return;
    FunctionFault& fault = faults_[failure->second];
    fault.outcome = Outcome::kFailsWithRecord;
    fault.failure = {record->errorClass, record->errorCode, record->className, Kestrel::WideToUtf8(record->description),
                     record->additionalText};
  }

  std::vector<Stream> streams_;
  std::map<std::uint64_t, std::size_t> open_;  ///< by handle
  std::vector<FunctionFault> faults_;
  std::map<Function, std::uint64_t> calls_;
  std::map<std::uint32_t, std::size_t> lastFailure_;  ///< by thread: the fault that an error record belongs to
};

std::size_t CommonPrefix(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

void Say(const std::string& text) {
  platform::OutputDebugStringA(("simulator: " + text + "\r\n").c_str());
}

}  // namespace

bool IsCapture(std::string_view content) {
  return content.starts_with(capture::kFileBegin);
}

Scenario ReadRecordedConversation(std::string_view content, const std::string& path, double speed) {
  StringSource source(content);
  capture::CaptureReader reader(source);
  Player player;
  try {
    for (Frame frame; reader.Next(frame);) player.Add(frame);
  } catch (const capture::CaptureError& error) {
    throw ScenarioMistake(path + ": " + error.what());
  }
  Scenario scenario = player.Finish(speed);
  if (scenario.recording->empty()) throw ScenarioMistake(path + ": holds no conversation");
  return scenario;
}

CommandReplay::CommandReplay(const std::vector<RecordedStream>& streams, std::size_t number) {
  const std::size_t own = std::min(number, streams.size() - 1);
  for (const RecordedStream& stream : streams)
    for (const RecordedCommand& command : stream.commands) candidates_.push_back({&command, &stream == &streams[own]});
}

std::vector<std::uint8_t> CommandReplay::Answer(std::span<const std::uint8_t> request) {
  const std::vector<std::uint8_t> wanted = WithoutCredentials(request);
  const std::uint32_t code = CodeOf(wanted);
  Candidate* nearest = nullptr;
  std::tuple<bool, bool, std::size_t, bool> best;  // the same, of this stream, how much is alike, not used
  for (Candidate& candidate : candidates_) {
    const RecordedCommand& command = *candidate.command;
    if (command.code != code) continue;
    const std::tuple score{command.request == wanted, candidate.ofThisStream, CommonPrefix(command.request, wanted),
                           !candidate.used};
    if (nearest && score <= best) continue;
    best = score;
    nearest = &candidate;
  }
  if (!nearest) {
    Say("the capture has no command " + std::to_string(code) + "; answered with nothing");
    return {};
  }
  nearest->used = true;
  if (nearest->command->request != wanted)
    Say("the capture has no such command " + std::to_string(code) + "; answered as in packet " +
        std::to_string(nearest->command->packet));
  return nearest->command->reply;
}

}  // namespace simulator
