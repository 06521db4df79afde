#include <nlohmann/json.hpp>
#include <utility>

#include "tools/search_view.h"

namespace tarnfind {

namespace {

class JsonView final : public SearchView {
 public:
  JsonView(TextOutput& output, const FoundCameras& cameras, JsonOptions options, Json summary)
      : output_(output), cameras_(cameras), options_(options), summary_(std::move(summary)) {}

  void ShowCamera(const FoundCamera& found, std::optional<std::uint32_t> kind) override {
    output_.Write(JsonLine(CameraEventObject(found, kind, cameras_, options_)));
  }
  void ShowPicture(const PictureEvent& event, const FoundCamera* camera) override {
    output_.Write(JsonLine(PictureObject(event, camera, options_)));
  }
  void ShowValues(const ValuesEvent& event, const FoundCamera* camera) override {
    output_.Write(JsonLine(ValuesObject(event, camera, options_)));
  }
  void Refresh(const SearchProgress&) override {}

  void Finish(const SearchProgress& progress) override {
    const CameraCounts& counts = progress.cameras.Counts();
    Json object = {{"event", "summary"}};
    object.update(summary_);
    object.update({{"cameras", progress.cameras.Size()},
                   {"shown", progress.cameras.Shown().size()},
                   {"known", counts.known},
                   {"new", counts.fresh},
                   {"changed", counts.changed},
                   {"gone", counts.gone},
                   {"pictures", progress.pictures},
                   {"values", progress.values},
                   {"list", ListWord(progress.list)},
                   {"sharedIps", SharedIpsArray(progress.cameras)},
                   {"interrupted", progress.interrupted}});
    if (!progress.listError.empty()) object["listError"] = progress.listError;
    if (options_.times) object["seconds"] = static_cast<double>(progress.elapsed.count()) / 1000;
    output_.Write(JsonLine(object));
  }

 private:
  TextOutput& output_;
  const FoundCameras& cameras_;
  JsonOptions options_;
  Json summary_;
};

}  // namespace

const char* ListWord(SearchProgress::List list) {
  constexpr const char* kWords[] = {"under way", "arrived", "failed"};
  return kWords[static_cast<std::size_t>(list)];
}

std::unique_ptr<SearchView> MakeJsonView(TextOutput& output, const FoundCameras& cameras, JsonOptions options,
                                         Json summary) {
  return std::make_unique<JsonView>(output, cameras, options, std::move(summary));
}

}  // namespace tarnfind
