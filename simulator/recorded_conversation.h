/// A capture as something to play: what the server pushed and when, and what it answered to which command.
///
/// Streams are played in the order in which they were created; a stream beyond those of the capture plays the last one
/// again. Each block comes as long after its stream's callback was registered as in the capture. A call that failed
/// fails again, with its error record; a call that took a millisecond or more takes as long again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/blocks.h"
#include "simulator/scenario.h"

namespace simulator {

struct RecordedBlock {
  std::uint32_t atMs = 0;
  Block block;
};

struct RecordedCommand {
  std::uint64_t packet = 0;  ///< its number in the file
  std::uint32_t code = 0;
  std::vector<std::uint8_t> request;  ///< without credentials
  std::vector<std::uint8_t> reply;
};

struct RecordedStream {
  std::vector<RecordedBlock> blocks;
  std::vector<RecordedCommand> commands;
};

/// Whether a file's content is a capture.
bool IsCapture(std::string_view content);
/// The scenario that plays the capture. speed as in a scenario. Throws ScenarioMistake, which names the path.
Scenario ReadRecordedConversation(std::string_view content, const std::string& path, double speed);

/// Answers the commands of one stream, which calls it under its own lock.
class CommandReplay {
 public:
  /// number: of the stream that it answers for; beyond their end the last one. Requires that `streams` outlives this.
  CommandReplay(const std::vector<RecordedStream>& streams, std::size_t number);

  /// The reply to the same request, if possible of this stream and not given before. Else the reply to the most similar
  /// request of the same command, if possible of this stream; else nothing. The debugger is told of the last two cases.
  std::vector<std::uint8_t> Answer(std::span<const std::uint8_t> request);

 private:
  struct Candidate {
    const RecordedCommand* command;
    bool ofThisStream;
    bool used = false;
  };
  std::vector<Candidate> candidates_;
};

}  // namespace simulator
