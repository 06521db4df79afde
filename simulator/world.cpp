#include "simulator/world.h"

#include <algorithm>
#include <utility>

#include "simulator/picture.h"
#include "simulator/random.h"
#include "simulator/record_fields.h"
#include "simulator/recorded_conversation.h"

namespace simulator {

using namespace Tarn::CameraFinding;

World::World(std::shared_ptr<const Scenario> scenario, std::size_t stream) : scenario_(std::move(scenario)) {
  if (const auto& recording = scenario_->recording) recorded_ = &(*recording)[std::min(stream, recording->size() - 1)];
  cameras_.reserve(scenario_->cameras.size());
  for (const CameraPlan& plan : scenario_->cameras) cameras_.push_back({plan.record, plan.present});
}

void World::StartTimeline() {
  nextEvent_ = 0;
  timelineStart_ = Clock::now();
}

std::optional<World::Clock::time_point> World::NextBlockTime() const {
  if (!pushes_.empty()) return Clock::time_point::min();
  if (nextEvent_ == (recorded_ ? recorded_->blocks.size() : scenario_->events.size())) return std::nullopt;
  const Milliseconds at =
      scenario_->Scaled(recorded_ ? recorded_->blocks[nextEvent_].atMs : scenario_->events[nextEvent_].atMs);
  return timelineStart_ + std::chrono::duration_cast<Clock::duration>(at);
}

Block World::TakeBlock() {
  if (!pushes_.empty()) {
    const PendingPush push = pushes_.front();
    pushes_.pop_front();
    return MakeBlock(push.camera, push.type, {});
  }
  if (recorded_) return recorded_->blocks[nextEvent_++].block;
  const Event& event = scenario_->events[nextEvent_++];
  Apply(event);
  return MakeBlock(event.camera, event.type, event.values);
}

void World::Apply(const Event& event) {
  Camera& camera = cameras_[event.camera];
  const Presence presence = RowOf(event.type).presence;
  if (presence != Presence::kAsItWas) camera.present = presence == Presence::kPresent;
  for (const RecordChange& change : event.set) Change(event.camera, change);
  camera.pictures += event.type == fmtPicture;
  camera.valueReports += event.type == fmtValues;
}

void World::Change(std::size_t camera, const RecordChange& change) {
  auto changed = std::make_shared<CameraRecord>(*cameras_[camera].record);
  change(*changed);
  cameras_[camera].record = std::move(changed);
}

Block World::MakeBlock(std::size_t camera, FinderMessageType type, const std::vector<std::uint64_t>& values) {
  const CameraRecord& record = *cameras_[camera].record;
  const std::string& given = scenario_->cameras[camera].text;
  const std::string& text = given.empty() ? record.mac : given;
  switch (type) {
    case fmtPicture:
      return PictureBlock(text, MakePicture(scenario_->seed, camera + 1, cameras_[camera].pictures));
    case fmtValues:
      return ValuesBlock(text, values.empty() ? MakeCounters(camera) : values);
    case fmtAssembledCamera:
      return AssembledBlock(record);
    case fmtCameraKind4:
      return GoneBlock(record);
    default:
      return RecordBlock(type, record);
  }
}

/// Report number, frames sent, frames lost, bytes per second.
std::vector<std::uint64_t> World::MakeCounters(std::size_t camera) const {
  constexpr std::uint64_t kFramesPerReport = 1500;
  const std::uint64_t report = cameras_[camera].valueReports;
  Random random{scenario_->seed, camera, report};
  const std::uint64_t lost = random.Below(20) * report;
  return {report, kFramesPerReport * report - lost, lost, 250'000 + random.Below(500'000)};
}

template <class Predicate>
std::optional<std::size_t> World::FindPresent(Predicate predicate) const {
  for (std::size_t i = 0; i < cameras_.size(); ++i)
    if (cameras_[i].present && predicate(*cameras_[i].record)) return i;
  return std::nullopt;
}

std::optional<std::size_t> World::FindByMac(const std::string& mac) const {
  return FindPresent([wanted = NormalizedMac(mac)](const CameraRecord& record) { return record.mac == wanted; });
}

std::optional<std::size_t> World::FindByIp(const std::string& ip) const {
  return FindPresent([&](const CameraRecord& record) { return record.ip == ip; });
}

std::vector<World::Record> World::PresentRecords() const {
  std::vector<Record> records;
  for (const Camera& camera : cameras_)
    if (camera.present) records.push_back(camera.record);
  return records;
}

void World::PushPreviousPictures() {
  for (std::size_t i = 0; i < cameras_.size(); ++i)
    if (cameras_[i].present && cameras_[i].pictures > 0) Push(i, fmtPicture);
}

}  // namespace simulator
