/// The server's side of the network: its cameras as they are, what is to be pushed next, and when.
///
/// Events happen strictly in the scenario's order; time only decides when the next one may. What commands add goes
/// before them. An event takes effect when its block is taken, so the server never knows more than it has said.
///
/// No lock inside: the stream that owns the world has one.
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
  /// A record does not change; a camera that changes gets another one. So a reader needs no lock to go on with it.
  using Record = std::shared_ptr<const CameraRecord>;

  explicit World(std::shared_ptr<const Scenario> scenario);

  /// The events begin, or begin again, at this moment.
  void StartTimeline();
  /// When TakeBlock may be called; nothing when there is nothing left to push.
  std::optional<Clock::time_point> NextBlockTime() const;
  /// Requires that something is left to push.
  Block TakeBlock();

  /// Indices of cameras that the server knows at this moment.
  std::optional<std::size_t> FindByMac(const std::string& mac) const;
  std::optional<std::size_t> FindByIp(const std::string& ip) const;
  std::vector<Record> PresentRecords() const;
  const Record& RecordOf(std::size_t camera) const { return cameras_[camera].record; }
  void Change(std::size_t camera, const RecordChange& change);

  /// Pushes the camera's record as it will be then.
  void Push(std::size_t camera, FinderMessageType type) { pushes_.push_back({camera, type}); }
  /// Pushes the last picture of each present camera that has taken one.
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
  std::vector<Camera> cameras_;  ///< in the order of the scenario
  std::deque<PendingPush> pushes_;
  std::size_t nextEvent_ = 0;
  Clock::time_point timelineStart_;
};

}  // namespace simulator
