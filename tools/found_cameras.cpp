#include "tools/found_cameras.h"

#include <algorithm>
#include <map>

#include "tools/mac_address.h"

namespace tarnfind {

namespace {

std::string KeyOf(const CameraSnapshot& camera) {
  return CameraKey(camera.mac, camera.ip);
}

bool HasIp(const FoundCamera& found) {
  return !found.IsGone() && !found.camera.ip.empty() && found.camera.ip != kNoIpAddress;
}

bool ByArrival(const FoundCamera* a, const FoundCamera* b) {
  return a->arrival < b->arrival;
}

/// Takes in what the message tells of the type; returns whether a known type changed. An assembled message has no
/// vendor mask, so its type does not replace one that is known.
bool TakeType(FoundCamera& found, std::int32_t type, Told told) {
  if (told == Told::kMac || (told == Told::kAssembled && (found.typeKnown || type == 0))) return false;
  const bool changed = found.typeKnown && found.type != type;
  found.type = type;
  found.typeKnown = true;
  return changed;
}

}  // namespace

void FoundCameras::Count(const FoundCamera& found, std::size_t by) {
  if (found.listed)
    counts_.known += by;
  else if (found.camera.told != Told::kMac)
    counts_.fresh += by;
  if (found.everChanged) counts_.changed += by;
  if (found.IsGone()) counts_.gone += by;
}

std::pair<FoundCamera*, bool> FoundCameras::BeginChange(const CameraSnapshot& camera, WallTime at) {
  const auto [entry, added] = byAddress_.try_emplace(KeyOf(camera));
  if (added) {
    const std::size_t arrival = Size();
    FoundCamera& found = shown_.emplace_front();
    found.camera.told = Told::kMac;
    found.camera.mac = camera.mac;
    if (camera.mac == kUnknownMac) found.camera.ip = camera.ip;  // part of its key
    found.camera = Merge(found.camera, camera);
    found.arrival = arrival;
    found.firstSeen = found.lastSeen = at;
    entry->second = shown_.begin();
    return {&found, true};
  }
  FoundCamera& found = *entry->second;
  Count(found, std::size_t{0} - 1);
  if (HasIp(found)) presentByIp_[found.camera.ip].erase(&found);
  byModel_[found.camera.model].erase(&found);
  return {&found, false};
}

void FoundCameras::EndChange(FoundCamera& found) {
  Count(found, 1);
  if (HasIp(found)) presentByIp_[found.camera.ip].insert(&found);
  byModel_[found.camera.model].insert(&found);
  const Place place = byAddress_.at(KeyOf(found.camera));
  std::list<FoundCamera>& from = found.shown ? shown_ : hidden_;
  found.shown = !filter_ || filter_(found);
  std::list<FoundCamera>& target = found.shown ? shown_ : hidden_;
  target.splice(target.begin(), from, place);
}

const FoundCamera& FoundCameras::Apply(const CameraEvent& event) {
  CameraSnapshot message = event.camera;
  message.told = ToldBy(event.kind, event.camera);
  const auto [entry, added] = BeginChange(message, event.at);
  FoundCamera& found = *entry;
  const bool gone = event.kind == Tarn::CameraFinding::cekGone;
  const bool cameAgain = !gone && (added || found.IsGone());
  const bool typeChanged = TakeType(found, event.type, message.told);
  const CameraSnapshot after = Merge(found.camera, message);
  const bool changed = !added && (typeChanged || !Agree(found.camera, after));
  found.camera = after;
  found.lastChange = gone ? Change::kGone : cameAgain ? Change::kNew : changed ? Change::kChanged : Change::kSame;
  if (found.lastChange != Change::kSame) found.lastNews = found.lastChange;
  found.everChanged |= found.lastChange == Change::kChanged;
  found.lastSeen = event.at;
  ++found.events;
  EndChange(found);
  return found;
}

const FoundCamera* FoundCameras::ApplyListed(const CameraSnapshot& camera, WallTime at) {
  const auto [entry, added] = BeginChange(camera, at);
  FoundCamera& found = *entry;
  const bool twice = found.listedWhole;
  const bool completes = !twice && found.camera.told < camera.told;
  if (twice) {
    found.listedTwiceAt = camera.ip;
  } else {
    found.listed = found.listedWhole = true;
    if (completes) found.camera = Merge(camera, found.camera);
    if (!found.typeKnown && camera.type != 0) TakeType(found, camera.type, camera.told);
    if (added) found.lastChange = found.lastNews = Change::kKnown;
  }
  EndChange(found);
  return added || completes || twice ? &found : nullptr;
}

void FoundCameras::MarkListed(const CameraSnapshot& camera, WallTime at) {
  CameraSnapshot address = camera;
  address.told = Told::kMac;
  const auto [entry, added] = BeginChange(address, at);
  entry->listed = true;
  if (added) entry->lastChange = entry->lastNews = Change::kKnown;
  EndChange(*entry);
}

std::vector<const FoundCamera*> FoundCameras::Latest(std::size_t most) const {
  std::vector<const FoundCamera*> result;
  for (auto it = shown_.begin(); it != shown_.end() && result.size() < most; ++it) result.push_back(&*it);
  std::sort(result.begin(), result.end(), ByArrival);
  return result;
}

const FoundCamera* FoundCameras::FindByText(const std::string& text) const {
  if (const auto known = byAddress_.find(StandardMac(text).value_or(text)); known != byAddress_.end())
    return &*known->second;
  const auto named = byModel_.find(text);
  return !text.empty() && named != byModel_.end() && named->second.size() == 1 ? *named->second.begin() : nullptr;
}

bool FoundCameras::SharesIp(const FoundCamera& found) const {
  const auto users = presentByIp_.find(found.camera.ip);
  return users != presentByIp_.end() && users->second.size() > 1 && users->second.contains(&found);
}

std::vector<std::pair<std::string, std::vector<const FoundCamera*>>> FoundCameras::SharedIps() const {
  std::map<std::string, std::vector<const FoundCamera*>> shared;
  for (const auto& [ip, users] : presentByIp_) {
    if (users.size() < 2) continue;
    std::vector<const FoundCamera*> cameras(users.begin(), users.end());
    std::sort(cameras.begin(), cameras.end(), ByArrival);
    shared.emplace(ip, std::move(cameras));
  }
  return {shared.begin(), shared.end()};
}

}  // namespace tarnfind
