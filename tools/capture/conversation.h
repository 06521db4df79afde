/// What each frame of a capture says: the calls with their commands and answers, the blocks with what became of them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "capture/capture_reader.h"
#include "protocol/camera_record.h"
#include "tools/capture/block_outcome.h"

namespace tarnfind {

/// A command that was sent, and its answer.
struct RecordedCommand {
  std::uint32_t code = 0;
  std::string name;      ///< "list", as the tool calls it
  std::string argument;  ///< the address that it names; empty for none
  std::vector<Tarn::CameraFinding::CameraRecord> cameras;
  std::string damage;  ///< of request or reply; empty where both are whole
};

struct RecordedEvent {
  const capture::Frame* frame = nullptr;
  std::string what;     ///< what happened, for one line
  std::string outcome;  ///< what came of it
  bool failed = false;  ///< the call failed, the delivery threw, or the block was dropped
  std::vector<std::string> macs;
  std::vector<std::string> ips;
  std::optional<RecordedCommand> command;
  std::optional<BlockOutcome> block;
  std::optional<capture::ErrorRecord> error;
};

/// Takes frames in their order, because what becomes of a block depends on the calls before it.
class Conversation {
 public:
  /// The event is valid as long as the frame.
  RecordedEvent Read(const capture::Frame& frame);

 private:
  RecordedEvent ReadCall(const capture::Frame& frame);
  RecordedEvent ReadBlock(const capture::Frame& frame);

  std::map<std::uint64_t, int> registered_;  ///< number of callbacks, by stream; nothing is known of a missing one
};

/// The name of the function, without the library's prefix, or of the event.
std::string ShortName(const capture::Frame& frame);

}  // namespace tarnfind
