/// How a search is shown. The main thread calls one view, in order of arrival.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tools/columns.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text_output.h"

namespace tarnfind {

/// The state of a search. Requires that `cameras` outlives it.
struct SearchProgress {
  explicit SearchProgress(const FoundCameras& all) : cameras(all) {}

  const FoundCameras& cameras;
  std::size_t pictures = 0;
  std::size_t values = 0;  ///< lists of values received
  std::chrono::milliseconds elapsed{0};
  std::optional<std::chrono::milliseconds> planned;  ///< empty: until Ctrl-C
  /// Of the server's list of known cameras.
  enum class List { kUnderWay, kArrived, kFailed } list = List::kUnderWay;
  std::string listError;
  bool interrupted = false;
};

class SearchView {
 public:
  virtual ~SearchView() = default;
  /// `found` is what the search knows of the camera with the event taken in. kind: empty for one of the server's list.
  virtual void ShowCamera(const FoundCamera& found, std::optional<std::uint32_t> kind) = 0;
  /// camera: whose picture it is; null where it belongs to no camera that is known.
  virtual void ShowPicture(const PictureEvent& event, const FoundCamera* camera) = 0;
  virtual void ShowValues(const ValuesEvent& event, const FoundCamera* camera) = 0;
  /// Something is wrong beside the cameras; the search goes on. Goes to standard error at once, unless the view says
  /// otherwise.
  virtual void ShowProblem(const std::string& text);
  /// Called several times a second while the channel is being opened.
  virtual void ShowConnecting(std::chrono::milliseconds) {}
  /// Called several times a second.
  virtual void Refresh(const SearchProgress& progress) = 0;
  virtual void Finish(const SearchProgress& progress) = 0;
  /// Whether nobody looks any more, so that the search may end. Asked several times a second.
  virtual bool IsAbandoned() const { return false; }
};

/// Shows everything in both views.
std::unique_ptr<SearchView> MakeBothViews(std::unique_ptr<SearchView> first, std::unique_ptr<SearchView> second);

struct PlainViewSettings {
  bool times = false;            ///< each line begins with the time
  const Column* sort = nullptr;  ///< of the rows at the end; null: in order of arrival
};
/// One line for each event, then a table of the cameras and a summary.
std::unique_ptr<SearchView> MakePlainView(TextOutput& output, const FoundCameras& cameras, PlainViewSettings settings);
/// One object for each event, then a summary. summary: its first keys.
std::unique_ptr<SearchView> MakeJsonView(TextOutput& output, const FoundCameras& cameras, JsonOptions options,
                                         Json summary);
/// At the end one line of comma-separated values for each camera.
std::unique_ptr<SearchView> MakeCsvView(TextOutput& output, const Column* sort);

struct LiveTableSettings {
  bool colours = false;
  const Column* sort = nullptr;  ///< null: in order of arrival
  std::function<platform::TerminalSize()> terminalSize;
};
/// A table redrawn in place. At the end it stays with every row, and problems go to standard error after it.
std::unique_ptr<SearchView> MakeLiveTable(TextOutput& output, LiveTableSettings settings);

/// What is said where the server's list is empty.
inline constexpr char kEmptyList[] =
    "The server's list is empty. The library does not tell whether the server knows no camera or did not answer";
/// What is said where a search has heard of no camera at all.
inline constexpr char kNothingArrived[] =
    "Nothing arrived, and the server's list is empty; tarnfind check shows how far the way to it goes";

/// All shown cameras, in the order of the column, or of arrival where that is null.
std::vector<const FoundCamera*> SortedCameras(const FoundCameras& cameras, const Column* sort);

/// Counts of everything: "2 cameras: 1 known, 1 new; 0 changed, 0 gone; 1 picture, 0 value lists".
std::string Totals(const SearchProgress& progress);
/// What must be said beside the counts, each a line: IP addresses that several cameras have, a camera that is listed
/// twice, a list that is missing, a search in which nothing arrived.
std::string Remarks(const SearchProgress& progress);
/// Totals and the time that it took.
std::string Summary(const SearchProgress& progress);
/// The state of the server's list in JSON: "under way", "arrived" or "failed".
const char* ListWord(SearchProgress::List list);
/// "3.2 s"
std::string Seconds(std::chrono::milliseconds duration);

}  // namespace tarnfind
