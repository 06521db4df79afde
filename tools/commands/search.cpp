#include <fmt/format.h>

#include <cstdlib>
#include <unordered_set>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/event_program.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::chrono::milliseconds kRefreshInterval{100};
/// Events that arrive before the list are kept back for this time, so that known cameras do not show as new ones.
constexpr std::chrono::milliseconds kListPatience{1000};

bool ColoursWanted() {
  const char* const noColour = std::getenv("NO_COLOR");
  return !noColour || !*noColour;
}

/// Takes events in, one after the other, and shows them.
class Search {
 public:
  Search(const Options& options, const ViewMaker& makeView, TextOutput& output)
      : options_(options),
        filtered_(!options.filters.empty()),
        cameras_(CombinedFilter(options)),
        output_(output),
        view_(makeView(cameras_, output_)),
        program_(options.program) {}

  SearchProgress& Progress() { return progress_; }
  const FoundCameras& Cameras() const { return cameras_; }
  bool CommandReturned() const { return commandReturned_; }

  void Take(std::vector<Event> events) {
    for (Event& event : events) {
      const bool early = !std::holds_alternative<ListedEvent>(event) && keepBack_;
      if (early)
        keptBack_.push_back(std::move(event));
      else
        std::visit([this](const auto& e) { TakeOne(e); }, event);
    }
    output_.Flush();
  }
  /// Shows what was kept back. Later events are shown at once.
  void StopKeepingBack() {
    keepBack_ = false;
    Take(std::exchange(keptBack_, {}));
  }
  void ShowConnecting(std::chrono::milliseconds elapsed) { view_->ShowConnecting(elapsed); }
  bool IsAbandoned() const { return view_->IsAbandoned(); }
  void Refresh() {
    if (keepBack_ && progress_.elapsed > kListPatience) StopKeepingBack();
    view_->Refresh(progress_);
    output_.Flush();
  }
  void Finish() {
    StopKeepingBack();
    view_->Finish(progress_);
    output_.Flush();
  }
  /// Throws what went wrong beside the search.
  void CheckPicturesAndProgram() const {
    if (!pictureError_.empty())
      throw Failure(Counted(lostPictures_, "picture") + " could not be kept");  // the reason was told at once
    if (!program_.Error().empty()) throw Failure("the program of --exec did not do its work");  // told at once, too
  }

 private:
  void TakeOne(const CameraEvent& event) {
    const FoundCamera& found = cameras_.Apply(event);
    if (!found.shown) return;
    view_->ShowCamera(found, event.kind);
    RunProgram([&] { return CameraEventObject(found, event.kind, cameras_, JsonOptionsOf()); });
  }
  void TakeOne(const PictureEvent& event) {
    if (!event.error.empty()) {
      ++lostPictures_;
      if (pictureError_.empty()) {
        pictureError_ = event.error;
        view_->ShowProblem(event.error);
      }
    }
    const FoundCamera* const camera = cameras_.FindByText(event.camera);
    if (IsHidden(camera)) return;
    ++progress_.pictures;
    view_->ShowPicture(event, camera);
    RunProgram([&] { return PictureObject(event, camera, JsonOptionsOf()); });
  }
  void TakeOne(const ValuesEvent& event) {
    const FoundCamera* const camera = cameras_.FindByText(event.camera);
    if (IsHidden(camera)) return;
    ++progress_.values;
    view_->ShowValues(event, camera);
    RunProgram([&] { return ValuesObject(event, camera, JsonOptionsOf()); });
  }
  void TakeOne(const ListedEvent& event) {
    progress_.list = event.error.empty() ? SearchProgress::List::kArrived : SearchProgress::List::kFailed;
    progress_.listError = event.error;
    // The list may be older or newer than an event that is kept back. So the list only marks such a camera as known;
    // the events follow in their order, and the list then completes what they have told.
    const std::unordered_set<std::string> awaited = AddressesKeptBack();
    for (const CameraSnapshot& camera : event.cameras)
      awaited.contains(camera.mac) ? cameras_.MarkListed(camera, event.at) : TakeListed(camera, event.at);
    StopKeepingBack();
    for (const CameraSnapshot& camera : event.cameras)
      if (awaited.contains(camera.mac)) TakeListed(camera, event.at);
  }
  void TakeListed(const CameraSnapshot& camera, WallTime at) {
    const FoundCamera* const found = cameras_.ApplyListed(camera, at);
    if (!found || !found->shown) return;
    view_->ShowCamera(*found, std::nullopt);
    RunProgram([&] { return CameraEventObject(*found, std::nullopt, cameras_, JsonOptionsOf()); });
  }
  std::unordered_set<std::string> AddressesKeptBack() const {
    std::unordered_set<std::string> addresses;
    for (const Event& event : keptBack_)
      if (const auto* const camera = std::get_if<CameraEvent>(&event)) addresses.insert(camera->camera.mac);
    return addresses;
  }
  void TakeOne(const ReturnedEvent&) { commandReturned_ = true; }

  /// The object is made only where a program gets it, because making it costs more than all else of an event.
  template <class MakeObject>
  void RunProgram(const MakeObject& make) {
    if (options_.program.empty()) return;
    output_.Flush();  // the event's line comes before what the program prints
    program_.Run(make());
  }

  /// With a filter, a picture or value list is hidden unless its camera is shown.
  bool IsHidden(const FoundCamera* camera) const { return filtered_ && (!camera || !camera->shown); }
  JsonOptions JsonOptionsOf() const { return {options_.showPasswords, options_.times}; }

  const Options& options_;
  bool filtered_;
  FoundCameras cameras_;
  CollectedOutput output_;
  std::unique_ptr<SearchView> view_;
  EventProgram program_;
  SearchProgress progress_{cameras_};
  bool keepBack_ = true;
  std::vector<Event> keptBack_;
  bool commandReturned_ = false;
  std::size_t lostPictures_ = 0;
  std::string pictureError_;
};

}  // namespace

std::unique_ptr<SearchView> MakeSearchView(const Options& options, const FoundCameras& cameras, const Json& summary,
                                           TextOutput& output) {
  if (options.json) return MakeJsonView(output, cameras, {options.showPasswords, options.times}, summary);
  if (options.csv) return MakeCsvView(output, options.sort);
  // Debugger lines, and what the program prints, would tear the table apart on the same terminal.
  const bool torn = (options.debugOutput || !options.program.empty()) && platform::IsTerminal(platform::Stream::kError);
  if (!platform::IsTerminal(platform::Stream::kOutput) || torn)
    return MakePlainView(output, cameras, {options.times, options.sort});
  return MakeLiveTable(
      output, {ColoursWanted(), options.sort, [] { return platform::GetTerminalSize(platform::Stream::kOutput); }});
}

void RunSearchWith(const SentCommand& command, double usualSeconds, const Options& options, TextOutput& output,
                   const ViewMaker& makeView) {
  const std::optional<std::chrono::milliseconds> planned = ReceivingTime(options, usualSeconds);
  const ViewMaker usual = [&](const FoundCameras& cameras, TextOutput& collected) {
    return MakeSearchView(options, cameras, command.summary, collected);
  };
  Search search(options, makeView ? makeView : usual, output);
  const Clock::time_point created = Clock::now();
  FinderSession session([&] { search.ShowConnecting(MillisecondsSince(created)); });
  session.Connect(options.library, options.pictures);
  session.BeginList(command.call);

  SearchProgress& progress = search.Progress();
  progress.planned = planned;
  const Clock::time_point begin = Clock::now();
  Clock::time_point start = begin;
  bool connected = true;
  while ((!planned || MillisecondsSince(start) < *planned) && !platform::Interrupted() && connected &&
         !search.IsAbandoned()) {
    const Clock::time_point refresh = Clock::now() + kRefreshInterval;
    const bool returnedBefore = search.CommandReturned();
    search.Take(session.TakeUntil(planned ? std::min(start + *planned, refresh) : refresh));
    if (search.CommandReturned() && !returnedBefore) start = Clock::now();
    progress.elapsed = MillisecondsSince(begin);
    search.Refresh();
    connected = session.IsRegistered();
  }
  progress.interrupted = platform::Interrupted() || search.IsAbandoned();
  search.Take(session.Close());
  progress.elapsed = MillisecondsSince(begin);
  search.Finish();
  if (command.call && !options.json && !options.csv && search.CommandReturned()) output.Write(command.sent + '\n');
  if (!connected) throw NoChannel(RowOf(Step::kChannel).name, "the server has ended the channel");
  if (command.call && !search.CommandReturned())
    throw Failure("the library had not returned from the command; whether the server took it cannot be known");
  if (progress.list == SearchProgress::List::kFailed)
    throw Failure("the server did not list its cameras: " + progress.listError, RowOf(Step::kList).name);
  search.CheckPicturesAndProgram();
  CheckExpectations(options, search.Cameras());
}

void RunSearch(const Options& options, TextOutput& output) {
  RunSearchWith({{}, {}, {{"command", "search"}}}, kUsualSearchSeconds, options, output);
}

void RunSendMac(const Options& options, TextOutput& output) {
  RunSearchWith({[mac = Utf16FromUtf8(options.mac)](auto& finder) { finder.SendMacAddress(mac.c_str()); },
                 fmt::format("Sent {}; the library does not tell whether the server took it.", options.mac),
                 {{"command", "send-mac"}, {"mac", options.mac}}},
                kUsualAnswerSeconds, options, output);
}

void RunBare(const Options& options, TextOutput& output) {
  RunSearchWith({[](auto& finder) { finder.SendBareCommand(); },
                 "Sent the bare command; the library does not tell whether the server took it.",
                 {{"command", "bare"}}},
                kUsualAnswerSeconds, options, output);
}

}  // namespace tarnfind
