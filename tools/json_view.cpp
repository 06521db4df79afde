#include <fmt/format.h>

#include "tools/json_objects.h"
#include "tools/search_view.h"

namespace tarnfind {

namespace {

class JsonView final : public SearchView {
 public:
  JsonView(TextOutput& output, bool showPasswords) : output_(output), showPasswords_(showPasswords) {}

  void ShowCamera(const CameraEvent& event, const FoundCamera& found) override {
    Write({{"event", "camera"},
           {"change", RowOf(found.lastChange).word},
           {"kind", event.kind},
           {"type", event.type},
           {"camera", CameraObject(event.camera, showPasswords_)}});
  }

  void ShowPicture(const PictureEvent& event) override {
    Write({{"event", "picture"},
           {"camera", event.camera},
           {"bytes", event.bytes},
           {"crc32", fmt::format("{:08x}", event.crc32)},
           {"file", event.file.empty() ? Json(nullptr) : Json(event.file)}});
  }

  void ShowValues(const ValuesEvent& event) override {
    Write({{"event", "values"}, {"camera", event.camera}, {"values", event.values}});
  }

  void Refresh(const SearchProgress&) override {}

  void Finish(const SearchProgress& progress) override {
    const FoundCameras& cameras = progress.cameras;
    Write({{"event", "summary"},
           {"command", "search"},
           {"cameras", cameras.Size()},
           {"new", cameras.Count(Change::kNew)},
           {"changed", cameras.Count(Change::kChanged)},
           {"same", cameras.Count(Change::kSame)},
           {"gone", cameras.Count(Change::kGone)},
           {"pictures", progress.pictures},
           {"values", progress.values}});
  }

 private:
  void Write(const Json& object) { output_.Write(JsonLine(object)); }

  TextOutput& output_;
  bool showPasswords_;
};

}  // namespace

std::unique_ptr<SearchView> MakeJsonView(TextOutput& output, bool showPasswords) {
  return std::make_unique<JsonView>(output, showPasswords);
}

}  // namespace tarnfind
