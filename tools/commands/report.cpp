/// A search as one HTML file: of one that runs, or of the lines that an earlier one has printed.
#include <fmt/format.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/page/lines_view.h"
#include "tools/page/report.h"
#include "tools/page/temporary_folder.h"
#include "tools/replaced_file.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// Keeps the lines of the search that runs.
class LinesFile final : public LineReceiver {
 public:
  explicit LinesFile(const std::filesystem::path& path) : stream_(path, std::ios::binary) {}
  void Add(std::string_view line, std::string_view) override { stream_ << line; }
  void SetState(std::string) override {}
  void Finish() {
    stream_.close();
    if (!stream_) throw Failure("cannot keep the lines of the report in the temporary folder");
  }

 private:
  std::ofstream stream_;
};

}  // namespace

void RunSearchWithReport(const Options& options, TextOutput& output) {
  ReplacedFile report(options.page.report);  // before the search, which would be in vain otherwise
  const TemporaryFolder temporary;
  Options search = options;
  if (search.pictures.path.empty()) search.pictures = {Utf8FromPath(temporary.Path()), kMostTemporaryPictureBytes};
  const std::filesystem::path linesPath = temporary.Path() / "lines.jsonl";
  LinesFile lines(linesPath);
  const auto write = [&] {
    lines.Finish();
    WriteReport({Utf8FromPath(linesPath), PathFromUtf8(search.pictures.path)}, report.Stream());
    report.Finish();
  };
  const Json summary = {{"command", "search"}};
  try {
    RunSearchWith({{}, {}, summary}, kUsualSearchSeconds, search, output,
                  [&](const FoundCameras& cameras, TextOutput& collected) {
                    return MakeBothViews(MakeSearchView(search, cameras, summary, collected),
                                         MakeLinesView(lines, nullptr, cameras, summary));
                  });
  } catch (const std::exception& error) {
    lines.Add(ErrorLine(error), {});
    write();
    throw;
  }
  write();
}

void RunReport(const Options& options, TextOutput& output) {
  const std::string& source = options.page.lines;
  const std::string& target = options.page.report;
  if (IsSameFile(source, target)) throw WrongUse("the report must be another file than the lines");
  std::optional<std::filesystem::path> pictures;
  if (!options.pictures.path.empty()) pictures = PathFromUtf8(options.pictures.path);
  ReplacedFile report(target);
  const ReportCounts written = WriteReport({source, pictures}, report.Stream());
  report.Finish();
  output.Write(options.json ? JsonLine({{"event", "summary"},
                                        {"command", "report"},
                                        {"file", target},
                                        {"lines", written.lines},
                                        {"pictures", written.pictures}})
                            : fmt::format("{}: {}, {}\n", Printable(target), Counted(written.lines, "line"),
                                          Counted(written.pictures, "picture")));
}

}  // namespace tarnfind
