#include <optional>

#include "tools/camera_table.h"
#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/csv.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

void PrintObjects(const std::vector<const FoundCamera*>& rows, const FoundCameras& cameras, const Options& options,
                  TextOutput& output) {
  for (const FoundCamera* const found : rows) {
    Json object = CameraEventObject(*found, std::nullopt, cameras, {options.showPasswords, options.times});
    output.Write(JsonLine(object));
  }
  Json summary = {{"event", "summary"},
                  {"command", "list"},
                  {"cameras", cameras.Size()},
                  {"shown", rows.size()},
                  {"sharedIps", SharedIpsArray(cameras)}};
  if (cameras.Size() == 0) summary["note"] = kEmptyList;
  output.Write(JsonLine(summary));
}

void PrintCsv(const std::vector<const FoundCamera*>& rows, const FoundCameras& cameras, TextOutput& output) {
  output.Write(CsvHeader());
  for (const FoundCamera* const found : rows) output.Write(CsvRow(*found, cameras));
}

void PrintRows(const std::vector<const FoundCamera*>& rows, const FoundCameras& cameras, TextOutput& output) {
  const bool terminal = platform::IsTerminal(platform::Stream::kOutput);
  const CameraTable table(terminal ? std::optional(platform::GetTerminalSize(platform::Stream::kOutput).columns)
                                   : std::nullopt);
  if (terminal && !rows.empty()) output.Write(table.Header({' '}) + '\n');
  for (const FoundCamera* const found : rows) output.Write(table.Row({' ', cameras.SharesIp(*found)}, *found) + '\n');
  const std::string shown = rows.size() == cameras.Size() ? "" : "; " + std::to_string(rows.size()) + " shown";
  SearchProgress progress{cameras};
  progress.list = SearchProgress::List::kArrived;
  output.Write((cameras.Size() == 0 ? "! " + std::string(kEmptyList) + '\n' : Remarks(progress)) +
               Counted(cameras.Size(), "camera") + shown + '\n');
}

}  // namespace

void RunList(const Options& options, TextOutput& output) {
  FinderSession session;
  session.Connect(options.library, {});
  FoundCameras cameras(CombinedFilter(options));
  const WallTime now = std::chrono::system_clock::now();
  for (const CameraSnapshot& camera : session.List().cameras) cameras.ApplyListed(camera, now);

  const std::vector<const FoundCamera*> rows = SortedCameras(cameras, options.sort);
  CollectedOutput collected(output);
  if (options.json)
    PrintObjects(rows, cameras, options, collected);
  else if (options.csv)
    PrintCsv(rows, cameras, collected);
  else
    PrintRows(rows, cameras, collected);
  collected.Flush();
  CheckExpectations(options, cameras);
}

}  // namespace tarnfind
