#include <fmt/format.h>

#include "tools/camera_table.h"
#include "tools/search_view.h"
#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {

namespace {

/// "00:40:8C:12:34:56", or the server's text where that means no known camera.
std::string NameOf(const FoundCamera* camera, const std::string& text) {
  return camera ? Printable(camera->camera.mac) : fmt::format("no known camera, \"{}\"", Printable(text));
}

class PlainView final : public SearchView {
 public:
  PlainView(TextOutput& output, const FoundCameras& cameras, PlainViewSettings settings)
      : output_(output), cameras_(cameras), settings_(settings) {}

  void ShowCamera(const FoundCamera& found, std::optional<std::uint32_t>) override {
    WriteLine(found.lastSeen, table_.Row({RowOf(found.lastChange).mark, cameras_.SharesIp(found)}, found));
  }

  void ShowPicture(const PictureEvent& event, const FoundCamera* camera) override {
    const std::string kept = !event.error.empty() ? ", not kept" : event.file.empty() ? "" : ", kept as " + event.file;
    WriteLine(event.at,
              fmt::format("* picture of {}: {}{}", NameOf(camera, event.camera), Counted(event.bytes, "byte"), kept));
  }

  void ShowValues(const ValuesEvent& event, const FoundCamera* camera) override {
    WriteLine(event.at, fmt::format("* values of {}: {}", NameOf(camera, event.camera), fmt::join(event.values, " ")));
  }

  void Refresh(const SearchProgress&) override {}
  void Finish(const SearchProgress& progress) override {
    const CameraTable table(std::nullopt, true);
    if (!cameras_.Shown().empty()) output_.Write('\n' + table.Header({' '}) + '\n');
    for (const FoundCamera* const found : SortedCameras(cameras_, settings_.sort))
      output_.Write(table.Row({RowOf(found->lastNews).mark, cameras_.SharesIp(*found)}, *found) + '\n');
    output_.Write(Remarks(progress) + Summary(progress) + '\n');
  }

 private:
  void WriteLine(WallTime at, const std::string& text) {
    output_.Write((settings_.times ? PreciseClockTime(at) + ' ' : "") + text + '\n');
  }

  TextOutput& output_;
  const FoundCameras& cameras_;
  PlainViewSettings settings_;
  CameraTable table_{std::nullopt};
};

}  // namespace

std::unique_ptr<SearchView> MakePlainView(TextOutput& output, const FoundCameras& cameras, PlainViewSettings settings) {
  return std::make_unique<PlainView>(output, cameras, settings);
}

}  // namespace tarnfind
