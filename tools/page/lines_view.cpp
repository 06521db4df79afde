#include "tools/page/lines_view.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "tools/failure.h"

namespace tarnfind {

namespace {

constexpr std::chrono::seconds kSignOfLife{1};

double InSeconds(std::chrono::milliseconds duration) {
  return static_cast<double>(duration.count()) / 1000;
}

class LinesView final : public SearchView, private TextOutput {
 public:
  LinesView(LineReceiver& lines, PagePictures* pictures, const FoundCameras& cameras, Json summary)
      : lines_(lines),
        pictures_(pictures),
        json_(MakeJsonView(*this, cameras, {.showPasswords = false, .times = true}, std::move(summary))) {}

  void ShowCamera(const FoundCamera& found, std::optional<std::uint32_t> kind) override {
    // The list's line says what an event's does not: that the server knew the camera.
    subject_ = fmt::format("{} {}", kind ? "camera" : "listed", found.arrival);
    json_->ShowCamera(found, kind);
  }
  void ShowPicture(const PictureEvent& event, const FoundCamera* camera) override {
    if (pictures_ && !event.file.empty()) pictures_->Add(event.file);
    subject_ = "picture " + event.camera;
    json_->ShowPicture(event, camera);
  }
  void ShowValues(const ValuesEvent& event, const FoundCamera* camera) override {
    subject_ = "values " + event.camera;
    json_->ShowValues(event, camera);
  }
  void ShowProblem(const std::string& text) override {
    subject_.clear();
    Write(JsonLine({{"event", "problem"}, {"text", text}}));
  }
  void ShowConnecting(std::chrono::milliseconds elapsed) override {
    SetState({{"event", "state"}, {"state", "connecting"}}, elapsed);
  }
  void Refresh(const SearchProgress& progress) override {
    Json state = {{"event", "state"}, {"state", "searching"}, {"list", ListWord(progress.list)}};
    if (!progress.listError.empty()) state["listError"] = progress.listError;
    if (progress.planned) state["planned"] = InSeconds(*progress.planned);
    SetState(std::move(state), progress.elapsed);
  }
  void Finish(const SearchProgress& progress) override {
    subject_.clear();
    json_->Finish(progress);
  }
  bool IsAbandoned() const override { return lines_.IsAbandoned(); }

 private:
  void Write(std::string_view line) override { lines_.Add(line, subject_); }

  /// Sends the state where something but the time has changed, or kSignOfLife after the one before.
  void SetState(Json state, std::chrono::milliseconds elapsed) {
    if (state == state_ && elapsed < stateElapsed_ + kSignOfLife) return;
    state_ = state;
    stateElapsed_ = elapsed;
    state["seconds"] = InSeconds(elapsed);
    lines_.SetState(JsonLine(state));
  }

  LineReceiver& lines_;
  PagePictures* const pictures_;
  std::unique_ptr<SearchView> json_;
  std::string subject_;  ///< of the line that is being written
  Json state_;
  std::chrono::milliseconds stateElapsed_{0};
};

}  // namespace

std::string ErrorLine(const std::exception& error) {
  const auto* const known = dynamic_cast<const CommandError*>(&error);
  Json object = {
      {"event", "error"}, {"error", ErrorText(error)}, {"exitCode", static_cast<int>(known ? known->Code() : kFailed)}};
  if (known && !known->Step().empty()) object["step"] = known->Step();
  return JsonLine(object);
}

std::unique_ptr<SearchView> MakeLinesView(LineReceiver& lines, PagePictures* pictures, const FoundCameras& cameras,
                                          Json summary) {
  return std::make_unique<LinesView>(lines, pictures, cameras, std::move(summary));
}

}  // namespace tarnfind
