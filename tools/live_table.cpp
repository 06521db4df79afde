#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "tools/camera_table.h"
#include "tools/display_width.h"
#include "tools/search_view.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval{100};
/// Header, "and more", progress, and the line where the cursor rests.
constexpr int kLinesBesideRows = 4;

constexpr char kClearToLineEnd[] = "\x1b[K";
constexpr char kClearBelow[] = "\x1b[J";
constexpr char kClearScreen[] = "\x1b[H\x1b[2J";
constexpr char kPlainColour[] = "\x1b[0m";
constexpr char kHeaderColour[] = "\x1b[1m";

/// Draws a frame over the one before: goes up by the height of the old one, and clears what is left of each old line.
class LiveTable final : public SearchView {
 public:
  LiveTable(TextOutput& output, LiveTableSettings settings) : output_(output), settings_(std::move(settings)) {}

  void ShowCamera(const FoundCamera&, std::optional<std::uint32_t>) override {}
  void ShowPicture(const PictureEvent&, const FoundCamera*) override {}
  void ShowValues(const ValuesEvent&, const FoundCamera*) override {}

  /// Lines between the frames would tear the table apart.
  void ShowProblem(const std::string& text) override { problems_.push_back(text); }

  void Refresh(const SearchProgress& progress) override {
    if (drawn_ && progress.elapsed - lastDrawn_ < kRedrawInterval) return;
    lastDrawn_ = progress.elapsed;
    std::string frame = BeginFrame();
    std::vector<std::string> lines = LatestRows(progress.cameras);
    for (const std::string& problem : problems_) lines.push_back(Line(Clip("! " + Printable(problem))));
    const std::string planned = progress.planned ? " of " + Seconds(*progress.planned) : ", Ctrl-C ends";
    lines.push_back(Line(Clip(fmt::format("{}{}   {}", Seconds(progress.elapsed), planned, Totals(progress)))));
    // The last ones that fit, because a frame as tall as the terminal would scroll.
    height_ = std::min(lines.size(), static_cast<std::size_t>(std::max(size_.rows - 1, 1)));
    for (const std::string& line : std::span(lines).last(height_)) frame += line;
    output_.Write(frame + kClearBelow);
    drawn_ = true;
  }

  void Finish(const SearchProgress& progress) override {
    output_.Write(BeginFrame() + kClearBelow);
    const CameraTable table(size_.columns, true);
    output_.Write(Line(table.Header({' '}), kHeaderColour));
    for (const FoundCamera* const found : SortedCameras(progress.cameras, settings_.sort))
      output_.Write(Row(table, *found, progress.cameras));
    // Not clipped, because no frame is drawn over these lines.
    output_.Write(Remarks(progress) + Summary(progress) + '\n');
    for (const std::string& problem : problems_) SearchView::ShowProblem(problem);
  }

 private:
  /// Takes the size that the terminal has now, and goes to where the old frame begins.
  std::string BeginFrame() {
    const platform::TerminalSize size = settings_.terminalSize();
    const bool resized = drawn_ && size != size_;
    size_ = size;
    // Resized, the terminal has wrapped the old lines anew, so that their place is unknown.
    if (resized) return kClearScreen;
    return height_ > 0 ? fmt::format("\x1b[{}A", height_) : std::string();
  }

  std::string Row(const CameraTable& table, const FoundCamera& found, const FoundCameras& cameras) const {
    const ChangeRow& change = RowOf(found.lastNews);
    return Line(table.Row({change.mark, cameras.SharesIp(found)}, found), change.colour);
  }

  std::vector<std::string> LatestRows(const FoundCameras& cameras) const {
    const CameraTable table(size_.columns);
    std::vector<std::string> lines{Line(table.Header({' '}), kHeaderColour)};
    auto rows = cameras.Latest(
        static_cast<std::size_t>(std::max(size_.rows - kLinesBesideRows - static_cast<int>(problems_.size()), 1)));
    if (settings_.sort) SortBy(*settings_.sort, rows);
    for (const FoundCamera* const found : rows) lines.push_back(Row(table, *found, cameras));
    const std::size_t more = cameras.Shown().size() - rows.size();
    if (more > 0) lines.push_back(Line(Clip(fmt::format("… and {} more", more))));
    return lines;
  }

  std::string Line(const std::string& text, std::string_view colour = {}) const {
    const bool coloured = settings_.colours && !colour.empty();
    return (coloured ? fmt::format("{}{}{}", colour, text, kPlainColour) : text) + kClearToLineEnd + '\n';
  }

  std::string Clip(const std::string& text) const {
    return ClipToWidth(text, static_cast<std::size_t>(std::max(size_.columns - 1, 1)));
  }

  TextOutput& output_;
  LiveTableSettings settings_;
  platform::TerminalSize size_;
  std::vector<std::string> problems_;
  std::size_t height_ = 0;  ///< of the last frame, in lines
  bool drawn_ = false;
  std::chrono::milliseconds lastDrawn_{0};
};

}  // namespace

std::unique_ptr<SearchView> MakeLiveTable(TextOutput& output, LiveTableSettings settings) {
  return std::make_unique<LiveTable>(output, std::move(settings));
}

}  // namespace tarnfind
