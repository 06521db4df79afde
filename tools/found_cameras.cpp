#include "tools/found_cameras.h"

#include <algorithm>

namespace tarnfind {

namespace {

constexpr char kUnknownAddress[] = "UNKNOWN";

std::string AddressOf(const CameraSnapshot& camera) {
  return camera.mac == kUnknownAddress ? camera.mac + ' ' + camera.ip : camera.mac;
}

Change Compare(const FoundCamera& known, const CameraEvent& event) {
  if (known.lastChange == Change::kGone) return Change::kNew;
  return known.camera == event.camera && known.type == event.type ? Change::kSame : Change::kChanged;
}

}  // namespace

const FoundCamera& FoundCameras::Apply(const CameraEvent& event) {
  const bool gone = event.kind == Tarn::CameraFinding::cekGone;
  const auto [entry, added] = byAddress_.try_emplace(AddressOf(event.camera));
  if (added) {
    byLastEvent_.push_front({event.camera, event.type, Change::kNew, Change::kNew, byLastEvent_.size()});
    entry->second = byLastEvent_.begin();
  } else {
    byLastEvent_.splice(byLastEvent_.begin(), byLastEvent_, entry->second);
  }
  FoundCamera& found = *entry->second;
  const Change change = gone ? Change::kGone : added ? Change::kNew : Compare(found, event);
  if (!gone) {
    found.camera = event.camera;
    found.type = event.type;
  }
  found.lastChange = change;
  if (change != Change::kSame) found.lastNews = change;
  ++counts_[static_cast<std::size_t>(change)];
  return found;
}

std::vector<const FoundCamera*> FoundCameras::Latest(std::size_t most) const {
  std::vector<const FoundCamera*> result;
  for (auto it = byLastEvent_.begin(); it != byLastEvent_.end() && result.size() < most; ++it) result.push_back(&*it);
  std::sort(result.begin(), result.end(),
            [](const FoundCamera* a, const FoundCamera* b) { return a->arrival < b->arrival; });
  return result;
}

}  // namespace tarnfind
