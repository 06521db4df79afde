/// The network of a simulated server, and what happens on it. A scenario never changes after it has been read, so that
/// streams share it without a lock.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "protocol/camera_record.h"
#include "simulator/functions.h"
#include "simulator/last_error.h"
#include "simulator/message_types.h"

namespace simulator {

using Tarn::CameraFinding::CameraRecord;
using Tarn::CameraFinding::FinderMessageType;
using RecordChange = std::function<void(CameraRecord&)>;
using Milliseconds = std::chrono::duration<double, std::milli>;

inline constexpr std::size_t kMostCameras = 100'000;

struct CameraPlan {
  std::string name;  ///< UTF-8
  std::string text;  ///< UTF-8; sent with its pictures and values. Empty: its hardware address
  std::shared_ptr<const CameraRecord> record;
  bool present = true;  ///< known to the server before anything happens
};

struct Event {
  std::uint32_t atMs = 0;
  std::size_t camera = 0;  ///< index
  FinderMessageType type = Tarn::CameraFinding::fmtCameraKind0;
  std::vector<RecordChange> set;      ///< changes of the camera's record, made before it is pushed
  std::vector<std::uint64_t> values;  ///< of a values event; empty: the simulator makes up counters
};

/// Which calls or blocks a fault acts on: one of them, counted from 1, or every one.
struct Occurrence {
  std::uint64_t number = 1;
  bool every = false;

  bool Matches(std::uint64_t count) const { return every || count == number; }
};

enum class Outcome { kAsUsual, kFailsWithRecord, kFailsWithoutRecord };

struct FunctionFault {
  FunctionFault() { failure.errorCode = kInjectedFault; }

  Function function = Function::kCreateLiveStream;
  Occurrence call;
  Outcome outcome = Outcome::kAsUsual;
  Failure failure;  ///< for kFailsWithRecord
  std::uint32_t delayMs = 0;
};

/// Acts on the blocks of each stream, in the order of their delivery.
struct BlockFault {
  Occurrence block;
  std::optional<std::uint64_t> cutAt;     ///< bytes of the block that are left
  std::optional<std::uint64_t> alterAt;   ///< offset of the altered byte
  std::optional<std::uint8_t> alterMask;  ///< bits of that byte that are inverted; empty: all
  std::uint32_t delayMs = 0;
};

struct RecordedStream;

struct Scenario {
  std::uint64_t seed = 1;
  double speed = 1;  ///< how many times faster than written; 0: without waiting
  std::vector<CameraPlan> cameras;
  std::vector<Event> events;  ///< by time, then as written
  std::vector<FunctionFault> functionFaults;
  std::vector<BlockFault> blockFaults;
  /// A capture that is played in place of cameras and events; null for none.
  std::shared_ptr<const std::vector<RecordedStream>> recording;

  Milliseconds Scaled(std::uint64_t milliseconds) const {
    return speed == 0 ? Milliseconds::zero() : Milliseconds(static_cast<double>(milliseconds)) / speed;
  }
};

}  // namespace simulator
