/// A search as lines for a page: those of search --json with times and without passwords, beside them how the search
/// goes and what is wrong. docs/tarnfind.schema.json describes every line.
#pragma once

#include <exception>
#include <memory>
#include <string>

#include "tools/page/line_receiver.h"
#include "tools/page/page_pictures.h"
#include "tools/search_view.h"

namespace tarnfind {

/// pictures: is told of each picture before its line; may be null. summary: first keys of the summary.
std::unique_ptr<SearchView> MakeLinesView(LineReceiver& lines, PagePictures* pictures, const FoundCameras& cameras,
                                          Json summary);

/// The line of a search that did not come to its end.
std::string ErrorLine(const std::exception& error);

}  // namespace tarnfind
