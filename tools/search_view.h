/// How a search is shown. The main thread calls one view, in order of arrival.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "tools/found_cameras.h"
#include "tools/platform.h"
#include "tools/text_output.h"

namespace tarnfind {

/// The state of a search. Requires that `cameras` outlives it.
struct SearchProgress {
  const FoundCameras& cameras;
  std::size_t pictures = 0;
  std::size_t values = 0;  ///< lists of values received
  std::chrono::milliseconds elapsed{0};
  std::chrono::milliseconds planned{0};
};

class SearchView {
 public:
  virtual ~SearchView() = default;
  /// `found` is what the search knows of the camera with the event taken in.
  virtual void ShowCamera(const CameraEvent& event, const FoundCamera& found) = 0;
  virtual void ShowPicture(const PictureEvent& event) = 0;
  virtual void ShowValues(const ValuesEvent& event) = 0;
  /// Called several times a second.
  virtual void Refresh(const SearchProgress& progress) = 0;
  virtual void Finish(const SearchProgress& progress) = 0;
};

/// One line for each event, then a summary.
std::unique_ptr<SearchView> MakePlainView(TextOutput& output);
/// One object for each event, then a summary.
std::unique_ptr<SearchView> MakeJsonView(TextOutput& output, bool showPasswords);

struct LiveTableSettings {
  bool colours = false;
  std::function<platform::TerminalSize()> terminalSize;
};
/// A table redrawn in place.
std::unique_ptr<SearchView> MakeLiveTable(TextOutput& output, LiveTableSettings settings);

/// Counts of everything: "2 cameras: 2 new, 0 changed, 0 gone; 1 picture, 0 value lists".
std::string Totals(const SearchProgress& progress);
/// Totals and the time that it took.
std::string Summary(const SearchProgress& progress);
/// "3.2 s"
std::string Seconds(std::chrono::milliseconds duration);

}  // namespace tarnfind
