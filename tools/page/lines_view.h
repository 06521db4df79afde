/// A search as lines for a page: those of search --json with times and without passwords, beside them how the search
/// goes and what is wrong. docs/tarnfind.schema.json describes every line.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "tools/page/page_pictures.h"
#include "tools/search_view.h"

namespace tarnfind {

/// Takes the lines, on the main thread.
class LineReceiver {
 public:
  virtual ~LineReceiver() = default;
  /// line: with its end. subject: what the line tells the newest of; empty for nothing.
  virtual void Add(std::string_view line, std::string_view subject) = 0;
  /// A line that only counts until the next one of its kind.
  virtual void SetState(std::string line) = 0;
  /// Whether nobody will read them any more.
  virtual bool IsAbandoned() const { return false; }
};

/// pictures: is told of each picture before its line; may be null. summary: first keys of the summary.
std::unique_ptr<SearchView> MakeLinesView(LineReceiver& lines, PagePictures* pictures, const FoundCameras& cameras,
                                          Json summary);

/// The line of a search that did not come to its end.
std::string ErrorLine(const std::exception& error);

}  // namespace tarnfind
