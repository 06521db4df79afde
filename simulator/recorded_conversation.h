/// A capture as something to play: what the server pushed and when, and what it answered to which command.
///
/// Streams are played in the order in which they were created; one more than the capture has plays the last one again.
/// Blocks come by their time since the stream's callback was registered. A call that failed fails again, with its error
/// record, and takes as long as it took.
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

/// Answers the commands of one stream.
class CommandReplay {
 public:
  /// number: of the stream among those of the capture, which must outlive this.
  CommandReplay(const std::vector<RecordedStream>& streams, std::size_t number);

  /// The reply to the same request, the first one that has not been given yet; else to the nearest request of the same
  /// kind, of this stream if it has one, which is said to the debugger. Nothing where the capture has none.
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
