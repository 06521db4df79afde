/// Reads a capture file front to back, a frame at a time.
///
/// Memory   One packet and the body of one frame, however long the file is; see kLargestBody.
/// Errors   CaptureError where the file is no capture, or damaged: frames before that have been returned. A file that
///          ends inside a block, as after a kill, is no error: the frames before it are returned, and
///          GetBytesBehindLastBlock tells.
/// Input    Any bytes. Packets of other interfaces, frames of later versions and unknown blocks are skipped, and their
///          number is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "capture/format.h"

namespace capture {

/// One line that says where, what was expected and what stood there.
class CaptureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Where the bytes of a capture come from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  /// Reads that many bytes, fewer only at the end. A source that follows a growing file waits for more instead.
  virtual std::size_t Read(void* target, std::size_t size) = 0;
};

/// A longer body is cut after this many bytes; Frame::IsCut tells.
inline constexpr std::size_t kLargestBody = std::size_t{64} << 20;

struct Frame {
  FrameHeader header;
  std::uint64_t number = 0;  ///< of its first packet in the file, from 1, as other tools count
  std::uint64_t offset = 0;  ///< of that packet's block in the file
  std::uint64_t time = 0;    ///< nanoseconds since 1970
  /// Of the file, from 1. The recorder begins one each time it is loaded, so that each is a run of its own.
  std::uint64_t section = 0;
  std::vector<std::uint8_t> body;

  bool IsCut() const { return body.size() != header.bodySize; }
  bool IsCall(Function function) const {
    return header.event == FrameEvent::kCall && header.function == static_cast<std::uint8_t>(function);
  }
  /// The first part of a kind: what is there of its payload. Nothing where there is none.
  std::optional<std::span<const std::uint8_t>> Find(PartKind kind) const;
  /// The numbers of the part "arguments".
  std::vector<std::uint64_t> GetArguments() const;
  /// When the call began; for other events their time.
  std::uint64_t GetStart() const {
    return header.event == FrameEvent::kCall && header.duration < time ? time - header.duration : time;
  }
};

/// What the part of an error record holds.
struct ErrorRecord {
  std::uint32_t errorClass = 0;
  std::uint32_t errorCode = 0;
  std::string className;
  std::u16string description;
  std::string additionalText;
};
/// Nothing where the payload is damaged.
std::optional<ErrorRecord> ReadErrorRecord(std::span<const std::uint8_t> payload);

class CaptureReader {
 public:
  explicit CaptureReader(ByteSource& source) : source_(source) {}

  /// False at the end of the file.
  bool Next(Frame& frame);

  std::uint64_t GetPacketCount() const { return packets_; }
  std::uint64_t GetSkippedCount() const { return skipped_; }
  /// Of a block that is not whole; 0 where the file ends with a block.
  std::uint64_t GetBytesBehindLastBlock() const { return behindLastBlock_; }

 private:
  struct Interface {
    bool isOurs = false;
    std::uint64_t unitsPerSecond = 1'000'000;
  };
  struct Packet {
    FrameHeader header;
    std::uint64_t offset = 0;
    std::uint64_t time = 0;
    std::uint64_t section = 0;
    std::span<const std::uint8_t> bytes;  ///< in block_, until the next block is read
  };

  /// The next packet of ours; false at the end.
  bool NextPacket(Packet& packet);
  /// Reads the block of that length behind its head into block_; false where the file ends before.
  bool ReadBlock(std::uint32_t length);
  bool SkipBlock(std::uint32_t length);
  void BeginSection();
  void AddInterface();
  bool ReadPacket(Packet& packet);
  [[noreturn]] void Refuse(const std::string& expected, const std::string& found) const;

  ByteSource& source_;
  std::uint64_t blockOffset_ = 0;
  std::uint64_t nextOffset_ = 0;
  std::vector<std::uint8_t> block_;  ///< what stands between a block's head and its second length
  std::vector<Interface> interfaces_;
  std::uint64_t sections_ = 0;
  std::uint64_t packets_ = 0;
  std::uint64_t skipped_ = 0;
  std::uint64_t behindLastBlock_ = 0;
  bool ended_ = false;
  std::optional<Packet> held_;  ///< a packet that was read and belongs to the next frame
};

}  // namespace capture
