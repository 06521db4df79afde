/// What a simulated server's network looks like and what happens on it. A scenario does not change once it is read;
/// streams share it.
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
  std::shared_ptr<const CameraRecord> record;
  bool present = true;  ///< known to the server before anything happens
};

struct Event {
  std::uint32_t atMs = 0;
  std::size_t camera = 0;  ///< index
  FinderMessageType type = Tarn::CameraFinding::fmtCameraKind0;
  std::vector<RecordChange> set;      ///< made to the camera's record before it is pushed
  std::vector<std::uint64_t> values;  ///< of a values event; empty: counters made by the simulator
};

/// The n-th time that something happens, counted from 1.
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

/// Done to the n-th block that a stream delivers.
struct BlockFault {
  Occurrence block;
  std::optional<std::uint64_t> cutAt;    ///< this many bytes are left
  std::optional<std::uint64_t> alterAt;  ///< a position in the block
  std::uint8_t alterMask = 0xFF;         ///< bits that are turned over there
  std::uint32_t delayMs = 0;
};

struct Scenario {
  std::uint64_t seed = 1;
  double speed = 1;  ///< 0: nothing is waited for
  std::vector<CameraPlan> cameras;
  std::vector<Event> events;  ///< by time, then as written
  std::vector<FunctionFault> functionFaults;
  std::vector<BlockFault> blockFaults;

  Milliseconds Scaled(std::uint64_t milliseconds) const {
    return speed == 0 ? Milliseconds::zero() : Milliseconds(static_cast<double>(milliseconds)) / speed;
  }
};

}  // namespace simulator
