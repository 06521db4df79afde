/// The server's side of the network: the state of its cameras, and the blocks that it pushes.
///
/// Events happen strictly in the scenario's order; time only decides when the next one may happen. Blocks that commands
/// cause go before events. An event takes effect when its block is taken, so that the server never knows more than it
/// has pushed.
///
/// Threads  No lock inside; the stream that owns the world calls it under its own lock.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "simulator/blocks.h"
#include "simulator/scenario.h"

namespace simulator {

class World {
 public:
  using Clock = std::chrono::steady_clock;
  /// Records never change; a camera that changes gets a new record. So a record is read without the lock.
  using Record = std::shared_ptr<const CameraRecord>;

  /// stream: which one of a capture is played; the last one where it has fewer.
  explicit World(std::shared_ptr<const Scenario> scenario, std::size_t stream = 0);

  /// Starts the events, or starts them again, at this moment.
  void StartTimeline();
  /// When TakeBlock may be called. Empty where nothing is left to push.
  std::optional<Clock::time_point> NextBlockTime() const;
  /// Requires that something is left to push.
  Block TakeBlock();

  /// Indices of cameras that the server knows at this moment.
  std::optional<std::size_t> FindByMac(const std::string& mac) const;
  std::optional<std::size_t> FindByIp(const std::string& ip) const;
  std::vector<Record> PresentRecords() const;
  const Record& RecordOf(std::size_t camera) const { return cameras_[camera].record; }
  void Change(std::size_t camera, const RecordChange& change);

  /// Adds a block. Its content is the camera's state at the moment when it is taken.
  void Push(std::size_t camera, FinderMessageType type) { pushes_.push_back({camera, type}); }
  /// Adds the last picture of each present camera that has taken one.
  void PushPreviousPictures();
  void DropPushes() { pushes_.clear(); }

 private:
  struct Camera {
    Record record;
    bool present;
    std::uint32_t pictures = 0;      ///< taken so far
    std::uint32_t valueReports = 0;  ///< made so far
  };
  struct PendingPush {
    std::size_t camera;
    FinderMessageType type;
  };

  void Apply(const Event& event);
  Block MakeBlock(std::size_t camera, FinderMessageType type, const std::vector<std::uint64_t>& values);
  std::vector<std::uint64_t> MakeCounters(std::size_t camera) const;
  template <class Predicate>
  std::optional<std::size_t> FindPresent(Predicate predicate) const;

  std::shared_ptr<const Scenario> scenario_;
  const RecordedStream* recorded_ = nullptr;  ///< played in place of the events; null for none
  std::vector<Camera> cameras_;               ///< in the order of the scenario
  std::deque<PendingPush> pushes_;
  std::size_t nextEvent_ = 0;
  Clock::time_point timelineStart_;
};

}  // namespace simulator
