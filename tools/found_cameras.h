/// The cameras of one search: what is known of each, and what an event means for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/event_queue.h"

namespace tarnfind {

/// What an event means. The event's kind does not tell: the server uses several for a camera that is there.
enum class Change { kNew, kChanged, kSame, kGone };

/// The column of marks, and the word in JSON. Row number = Change.
struct ChangeRow {
  Change change;
  char mark;
  const char* word;
  const char* colour;  ///< control sequence of a terminal
};
inline constexpr ChangeRow kChanges[] = {
    {Change::kNew, '+', "new", "\x1b[32m"},
    {Change::kChanged, '~', "changed", "\x1b[33m"},
    {Change::kSame, '=', "same", ""},
    {Change::kGone, '-', "gone", "\x1b[31m"},
};
constexpr const ChangeRow& RowOf(Change change) {
  return kChanges[static_cast<std::size_t>(change)];
}

struct FoundCamera {
  CameraSnapshot camera;
  std::int32_t type = 0;
  Change lastChange = Change::kNew;
  Change lastNews = Change::kNew;  ///< the last one that was not kSame
  std::size_t arrival = 0;         ///< 0 for the first camera of the search
};

class FoundCameras {
 public:
  /// Takes the event in. A camera is known by its MAC address; those without one ("UNKNOWN") by their IP address too.
  /// One that has gone keeps what was known of it, and is new when it comes again.
  const FoundCamera& Apply(const CameraEvent& event);

  std::size_t Size() const { return byLastEvent_.size(); }
  /// Events of this meaning so far.
  std::size_t Count(Change change) const { return counts_[static_cast<std::size_t>(change)]; }
  /// At most `most` cameras, those with the latest events, in order of arrival. Valid until the next Apply.
  std::vector<const FoundCamera*> Latest(std::size_t most) const;

 private:
  std::list<FoundCamera> byLastEvent_;  ///< the latest event first
  std::unordered_map<std::string, std::list<FoundCamera>::iterator> byAddress_;
  std::size_t counts_[std::size(kChanges)] = {};
};

}  // namespace tarnfind
