#include <cstdlib>

#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/finder_session.h"
#include "tools/search_view.h"

namespace tarnfind {

namespace {

constexpr double kUsualSeconds = 5;
constexpr std::chrono::milliseconds kRefreshInterval{100};

bool ColoursWanted() {
  const char* const noColour = std::getenv("NO_COLOR");
  return !noColour || !*noColour;
}

std::unique_ptr<SearchView> MakeView(const Options& options, TextOutput& output) {
  if (options.json) return MakeJsonView(output, options.showPasswords);
  // Debugger lines on the same terminal would tear the table apart.
  const bool torn = options.debugOutput && platform::IsTerminal(platform::Stream::kError);
  if (!platform::IsTerminal(platform::Stream::kOutput) || torn) return MakePlainView(output);
  return MakeLiveTable(output, {ColoursWanted(), platform::GetTerminalSize});
}

/// Takes events in, one after the other, and shows them.
class Search {
 public:
  Search(SearchView& view, std::chrono::milliseconds planned) : view_(view) { progress_.planned = planned; }

  void Take(const std::vector<Event>& events) {
    for (const Event& event : events) std::visit([this](const auto& e) { TakeOne(e); }, event);
  }
  void Refresh(std::chrono::milliseconds elapsed) {
    progress_.elapsed = elapsed;
    view_.Refresh(progress_);
  }
  void Finish(std::chrono::milliseconds elapsed) {
    progress_.elapsed = elapsed;
    view_.Finish(progress_);
  }
  /// Why the first picture that could not be kept was not; empty where all were.
  const std::string& PictureError() const { return pictureError_; }

 private:
  void TakeOne(const CameraEvent& event) { view_.ShowCamera(event, cameras_.Apply(event)); }
  void TakeOne(const PictureEvent& event) {
    ++progress_.pictures;
    if (pictureError_.empty()) pictureError_ = event.error;
    view_.ShowPicture(event);
  }
  void TakeOne(const ValuesEvent& event) {
    ++progress_.values;
    view_.ShowValues(event);
  }

  SearchView& view_;
  FoundCameras cameras_;
  SearchProgress progress_{cameras_};
  std::string pictureError_;
};

}  // namespace

void RunSearch(const Options& options, TextOutput& output) {
  const std::chrono::milliseconds planned(static_cast<std::int64_t>(options.seconds.value_or(kUsualSeconds) * 1000));
  const std::unique_ptr<SearchView> view = MakeView(options, output);
  Search search(*view, planned);
  FinderSession session(options.library);

  platform::CatchInterrupts();
  const Clock::time_point start = Clock::now();
  const auto elapsed = [&] { return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start); };
  session.Watch(options.pictures);
  while (elapsed() < planned && !platform::Interrupted() && search.PictureError().empty()) {
    search.Take(session.TakeUntil(std::min(start + planned, Clock::now() + kRefreshInterval)));
    search.Refresh(elapsed());
  }
  search.Take(session.Close());
  search.Finish(elapsed());
  if (!search.PictureError().empty()) throw Failure(search.PictureError());
}

}  // namespace tarnfind
