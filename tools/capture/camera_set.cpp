#include "tools/capture/camera_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>

#include "protocol/camera_info.h"
#include "protocol/finder_messages.h"
#include "tools/camera_snapshot.h"
#include "tools/capture/capture_file.h"
#include "tools/capture/conversation.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/mac_address.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

/// More cameras than any server has; a file with more is no search.
constexpr std::size_t kMostCameras = 1'000'000;
constexpr std::size_t kLongestLine = 1 << 20;

void RequireRoom(std::size_t cameras) {
  if (cameras == kMostCameras) throw WrongUse(fmt::format("there are more than {} cameras", kMostCameras));
}

[[noreturn]] void ThrowNothingTold(const std::string& path) {
  throw WrongUse(
      fmt::format("{}: no camera was told and no list came, so nobody knows what is missing", Printable(path)));
}

CameraSet ReadCapturedCameras(const std::string& path) {
  std::map<std::string, CameraSnapshot> cameras;
  const auto take = [&cameras](const CameraSnapshot& camera) {
    const std::string key = CameraKey(camera.mac, camera.ip);
    if (key.empty()) return;
    RequireRoom(cameras.size());
    const auto [known, added] = cameras.try_emplace(key, camera);
    if (!added) known->second = Merge(known->second, camera);
  };
  CaptureFile file(path);
  Conversation conversation;
  bool toldAny = false;
  const std::string note = ReadFrames(file, [&](const capture::Frame& frame) {
    const RecordedEvent event = conversation.Read(frame);
    toldAny |= event.block && event.block->camera;
    if (event.command && event.command->code == Tarn::CameraFinding::fcListFoundCameras)
      toldAny |= !event.failed && event.command->damage.empty();
    if (event.command && !event.failed)
      for (auto record : event.command->cameras) take(SnapshotOf(*MakeCameraInfo(std::move(record)).Get()));
    if (!event.block || !event.block->camera) return;
    const CameraSnapshot& camera = *event.block->camera;
    if (event.block->isGone)
      cameras.erase(CameraKey(camera.mac, camera.ip));
    else
      take(camera);
  });
  if (!toldAny) ThrowNothingTold(path);
  if (!note.empty()) platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", note));
  CameraSet shown;
  for (const auto& [key, camera] : cameras) shown.emplace(key, CameraObject(camera, false));
  return shown;
}

CameraSet ReadSavedCameras(std::istream& file, const std::string& path) {
  CameraSet cameras;
  std::string line;
  bool hasList = false, lacksList = false, toldAny = false;
  for (std::uint64_t number = 1; std::getline(file, line); ++number) {
    const auto wrong = [&](const char* what) {
      return WrongUse(fmt::format("{}: line {} {}", Printable(path), number, what));
    };
    if (line.size() > kLongestLine) throw wrong("is too long");
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const Json object = ParseJsonLine(line);
    if (!object.is_object()) throw wrong("is neither JSON nor the beginning of a capture");
    const Json list = object.value("list", Json());
    hasList |= list == "arrived";
    lacksList |= !list.is_null() && list != "arrived";
    const auto key = TakeCameraObject(cameras, object);
    if (!key) throw wrong("shows a camera without an address");
    toldAny |= !key->empty();
  }
  if (!toldAny && !hasList) ThrowNothingTold(path);
  if (lacksList)
    platform::Write(
        platform::Stream::kError,
        fmt::format("tarnfind: {}: the server's list did not come, so what is missing there need not be gone\n",
                    Printable(path)));
  if (file.bad()) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
  return cameras;
}

bool IsMasked(const Json& value) {
  if (!value.is_string()) return false;
  const auto& text = value.get_ref<const std::string&>();
  return !text.empty() && text.find_first_not_of('*') == std::string::npos;
}

std::vector<FieldChange> ChangedFields(const Json& before, const Json& after) {
  std::vector<FieldChange> changes;
  for (const auto& [field, old] : before.items()) {
    const auto fresh = after.find(field);
    const bool isAddress = field == "mac";  // of one camera, which may be spelled in two ways
    if (fresh == after.end() || *fresh == old || isAddress) continue;
    const bool credential = field == "user" || field == "password";
    if (!credential || (!IsMasked(old) && !IsMasked(*fresh))) changes.push_back({field, old, *fresh});
  }
  std::ranges::sort(changes, {}, &FieldChange::field);
  return changes;
}

}  // namespace

CameraSet ReadCameraSet(const std::string& path) {
  std::ifstream file(PathFromUtf8(path), std::ios::binary);
  if (!file) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
  char begin[4] = {};
  file.read(begin, sizeof begin);
  if (std::string_view(begin, sizeof begin) == capture::kFileBegin) return ReadCapturedCameras(path);
  file.clear();
  file.seekg(0);
  return ReadSavedCameras(file, path);
}

std::optional<std::string> TakeCameraObject(CameraSet& cameras, const Json& object) {
  const auto camera = object.find("camera");
  if (camera == object.end() || !camera->is_object()) return "";
  const auto mac = camera->find("mac");
  if (mac == camera->end() || !mac->is_string()) return std::nullopt;
  const auto ip = camera->find("ip");
  const std::string key =
      CameraKey(mac->get<std::string>(), ip != camera->end() && ip->is_string() ? ip->get<std::string>() : "");
  if (object.value("change", Json()) == "gone") {
    cameras.erase(key);
  } else if (!key.empty()) {
    RequireRoom(cameras.size());
    // What an event leaves out stays as it was told before.
    cameras.try_emplace(key, Json::object()).first->second.update(*camera);
  }
  return key;
}

std::vector<CameraDifference> Compare(const CameraSet& before, const CameraSet& after) {
  std::vector<CameraDifference> differences;
  for (const auto& [key, camera] : before) {
    const auto other = after.find(key);
    if (other == after.end()) {
      differences.push_back({key, CameraDifference::kGone, {}});
      continue;
    }
    auto fields = ChangedFields(camera, other->second);
    if (fields.empty()) continue;
    const bool moved = std::ranges::any_of(fields, [](const FieldChange& change) { return change.field == "ip"; });
    differences.push_back({key, moved ? CameraDifference::kMoved : CameraDifference::kChanged, std::move(fields)});
  }
  for (const auto& [key, camera] : after)
    if (!before.contains(key)) differences.push_back({key, CameraDifference::kAppeared, {}});
  std::ranges::sort(differences, {}, &CameraDifference::key);
  return differences;
}

}  // namespace tarnfind
