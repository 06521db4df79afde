#include <fmt/format.h>

#include <algorithm>
#include <utility>

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
    BeginFrame();
    AddLatestRows(progress.cameras);
    const std::string planned = progress.planned ? " of " + Seconds(*progress.planned) : ", Ctrl-C ends";
    AddLine(Clip(fmt::format("{}{}   {}", Seconds(progress.elapsed), planned, Totals(progress))));
    for (const std::string& problem : problems_) AddLine(Clip("! " + Printable(problem)));
    EndFrame();
  }

  void Finish(const SearchProgress& progress) override {
    BeginFrame();
    frame_ += kClearBelow;
    const CameraTable table(size_.columns, true);
    AddLine(table.Header({' '}), kHeaderColour);
    for (const FoundCamera* const found : SortedCameras(progress.cameras, settings_.sort)) {
      AddRow(table, *found, progress.cameras);
      output_.Write(std::exchange(frame_, {}));
    }
    // Not clipped, because no frame is drawn over these lines.
    output_.Write(frame_ + Remarks(progress) + Summary(progress) + '\n');
    for (const std::string& problem : problems_) SearchView::ShowProblem(problem);
  }

 private:
  void BeginFrame() {
    const platform::TerminalSize size = settings_.terminalSize();
    frame_.clear();
    if (drawn_ && size != size_)
      frame_ += kClearScreen;  // the terminal has wrapped the old lines anew, so that their place is unknown
    else if (lines_ > 0)
      frame_ += fmt::format("\x1b[{}A", lines_);
    lines_ = 0;
    size_ = size;
  }

  void EndFrame() {
    frame_ += kClearBelow;
    output_.Write(frame_);
    drawn_ = true;
  }

  void AddRow(const CameraTable& table, const FoundCamera& found, const FoundCameras& cameras) {
    const ChangeRow& change = RowOf(found.lastNews);
    AddLine(table.Row({change.mark, cameras.SharesIp(found)}, found), change.colour);
  }

  void AddLatestRows(const FoundCameras& cameras) {
    const CameraTable table(size_.columns);
    AddLine(table.Header({' '}), kHeaderColour);
    auto rows = cameras.Latest(
        static_cast<std::size_t>(std::max(size_.rows - kLinesBesideRows - static_cast<int>(problems_.size()), 1)));
    if (settings_.sort) SortBy(*settings_.sort, rows);
    for (const FoundCamera* const found : rows) AddRow(table, *found, cameras);
    const std::size_t more = cameras.Shown().size() - rows.size();
    if (more > 0) AddLine(Clip(fmt::format("… and {} more", more)));
  }

  void AddLine(const std::string& text, std::string_view colour = {}) {
    const bool coloured = settings_.colours && !colour.empty();
    frame_ += coloured ? fmt::format("{}{}{}", colour, text, kPlainColour) : text;
    frame_ += kClearToLineEnd;
    frame_ += '\n';
    ++lines_;
  }

  std::string Clip(const std::string& text) const {
    return ClipToWidth(text, static_cast<std::size_t>(std::max(size_.columns - 1, 1)));
  }

  TextOutput& output_;
  LiveTableSettings settings_;
  platform::TerminalSize size_;
  std::string frame_;
  std::vector<std::string> problems_;
  int lines_ = 0;
  bool drawn_ = false;
  std::chrono::milliseconds lastDrawn_{0};
};

}  // namespace

std::unique_ptr<SearchView> MakeLiveTable(TextOutput& output, LiveTableSettings settings) {
  return std::make_unique<LiveTable>(output, std::move(settings));
}

}  // namespace tarnfind
