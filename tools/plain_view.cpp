#include <fmt/format.h>

#include <optional>

#include "tools/camera_table.h"
#include "tools/search_view.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

class PlainView final : public SearchView {
 public:
  explicit PlainView(TextOutput& output) : output_(output) {}

  void ShowCamera(const CameraEvent&, const FoundCamera& found) override {
    output_.Write(table_.Row(RowOf(found.lastChange).mark, found.camera, found.type) + '\n');
  }

  void ShowPicture(const PictureEvent& event) override {
    const std::string kept = event.file.empty() ? "" : ", kept as " + event.file;
    output_.Write(fmt::format("* picture of {}: {}{}\n", Printable(event.camera), Counted(event.bytes, "byte"), kept));
  }

  void ShowValues(const ValuesEvent& event) override {
    output_.Write(fmt::format("* values of {}: {}\n", Printable(event.camera), fmt::join(event.values, " ")));
  }

  void Refresh(const SearchProgress&) override {}
  void Finish(const SearchProgress& progress) override { output_.Write(Summary(progress) + '\n'); }

 private:
  TextOutput& output_;
  CameraTable table_{std::nullopt};
};

}  // namespace

std::unique_ptr<SearchView> MakePlainView(TextOutput& output) {
  return std::make_unique<PlainView>(output);
}

std::string Totals(const SearchProgress& progress) {
  const FoundCameras& cameras = progress.cameras;
  return fmt::format("{}: {} new, {} changed, {} gone; {}, {}", Counted(cameras.Size(), "camera"),
                     cameras.Count(Change::kNew), cameras.Count(Change::kChanged), cameras.Count(Change::kGone),
                     Counted(progress.pictures, "picture"), Counted(progress.values, "value list"));
}

std::string Summary(const SearchProgress& progress) {
  return Totals(progress) + " in " + Seconds(progress.elapsed);
}

std::string Seconds(std::chrono::milliseconds duration) {
  return fmt::format("{}.{} s", duration.count() / 1000, duration.count() / 100 % 10);
}

}  // namespace tarnfind
