/// The cameras of one search: what is known of each, and what an event means for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <list>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tools/event_queue.h"

namespace tarnfind {

/// What an event means. The event's kind does not tell, because a server uses several for a camera that is there.
enum class Change { kKnown, kNew, kChanged, kSame, kGone };

/// The column of marks, and the word in JSON. Row number = Change.
struct ChangeRow {
  Change change;
  char mark;
  const char* word;
  const char* colour;  ///< control sequence of a terminal
};
inline constexpr ChangeRow kChanges[] = {
    {Change::kKnown, '.', "known", ""},
    {Change::kNew, '+', "new", "\x1b[32m"},
    {Change::kChanged, '~', "changed", "\x1b[33m"},
    {Change::kSame, '=', "same", ""},
    {Change::kGone, '-', "gone", "\x1b[31m"},
};
static_assert([] {
  for (std::size_t i = 0; i < std::size(kChanges); ++i)
    if (static_cast<std::size_t>(kChanges[i].change) != i) return false;
  return true;
}());
constexpr const ChangeRow& RowOf(Change change) {
  return kChanges[static_cast<std::size_t>(change)];
}

struct FoundCamera {
  CameraSnapshot camera;  ///< what all messages together have told
  std::int32_t type = 0;
  bool typeKnown = false;
  bool listed = false;       ///< the server knew it when the search began
  bool listedWhole = false;  ///< and what its list tells has been taken in
  bool everChanged = false;
  bool shown = true;  ///< passes the filter
  Change lastChange = Change::kNew;
  Change lastNews = Change::kNew;  ///< the last one that was not kSame
  std::size_t arrival = 0;         ///< 0 for the first camera of the search
  std::size_t events = 0;
  WallTime firstSeen;
  WallTime lastSeen;
  std::string listedTwiceAt;  ///< IP address of a second camera that the list has under the same hardware address

  bool IsGone() const { return lastChange == Change::kGone; }
};

/// Numbers of cameras, not of events.
struct CameraCounts {
  std::size_t known = 0;  ///< the server knew them when the search began
  std::size_t fresh = 0;  ///< it did not; a camera of which only the end was told does not count
  std::size_t changed = 0;
  std::size_t gone = 0;  ///< and have not come again
};

class FoundCameras {
 public:
  using Filter = std::function<bool(const FoundCamera& found)>;
  /// filter: which cameras are shown. Empty: all.
  explicit FoundCameras(Filter filter = {}) : filter_(std::move(filter)) {}

  /// Takes the event in. A camera is known by its MAC address in any spelling; those without one ("UNKNOWN") by their
  /// IP address too. One that has gone keeps what was known of it, and is new when it comes again. The reference stays
  /// valid as long as this object lives.
  const FoundCamera& Apply(const CameraEvent& event);
  /// Takes in a camera that the server listed when the search began. Events count more, because they may be newer: what
  /// they have told stays, and the list completes it. Null where the list tells nothing new.
  const FoundCamera* ApplyListed(const CameraSnapshot& camera, WallTime at);
  /// Takes in that the server listed a camera, and nothing else of it, because an event that is still to be applied
  /// tells the rest. ApplyListed may follow that event.
  void MarkListed(const CameraSnapshot& camera, WallTime at);

  std::size_t Size() const { return shown_.size() + hidden_.size(); }
  /// Of all cameras.
  const CameraCounts& Counts() const { return counts_; }
  /// Cameras that pass the filter, the one with the latest event first.
  const std::list<FoundCamera>& Shown() const { return shown_; }
  /// At most `most` of the shown cameras, those with the latest events, in order of arrival. Valid until the next
  /// change.
  std::vector<const FoundCamera*> Latest(std::size_t most) const;

  /// The camera that a picture's or value list's text means: by MAC address, else the only one whose model it names.
  /// Null where there is none.
  const FoundCamera* FindByText(const std::string& text) const;
  /// Whether another camera that is present has the same IP address.
  bool SharesIp(const FoundCamera& found) const;
  /// IP addresses that several present cameras have, with those cameras, both in order.
  std::vector<std::pair<std::string, std::vector<const FoundCamera*>>> SharedIps() const;

 private:
  using Place = std::list<FoundCamera>::iterator;
  using Index = std::unordered_map<std::string, std::unordered_set<const FoundCamera*>>;
  /// A camera and whether it was added for this call; taken out of the indices and of the counts that may change.
  std::pair<FoundCamera*, bool> BeginChange(const CameraSnapshot& camera, WallTime at);
  void EndChange(FoundCamera& found);
  void Count(const FoundCamera& found, std::size_t by);

  Filter filter_;
  std::list<FoundCamera> shown_;
  std::list<FoundCamera> hidden_;
  std::unordered_map<std::string, Place> byAddress_;
  Index presentByIp_;
  Index byModel_;
  CameraCounts counts_;
};

}  // namespace tarnfind
