#include <optional>

#include "tools/camera_table.h"
#include "tools/commands/commands.h"
#include "tools/finder_session.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

void PrintObjects(const std::vector<CameraSnapshot>& cameras, const Options& options, TextOutput& output) {
  for (const CameraSnapshot& camera : cameras)
    output.Write(JsonLine({{"event", "camera"}, {"camera", CameraObject(camera, options.showPasswords)}}));
  output.Write(JsonLine({{"event", "summary"}, {"command", "list"}, {"cameras", cameras.size()}}));
}

void PrintRows(const std::vector<CameraSnapshot>& cameras, TextOutput& output) {
  const bool terminal = platform::IsTerminal(platform::Stream::kOutput);
  const CameraTable table(terminal ? std::optional(platform::GetTerminalSize().columns) : std::nullopt);
  if (terminal && !cameras.empty()) output.Write(table.Header(0) + '\n');
  for (const CameraSnapshot& camera : cameras) output.Write(table.Row(0, camera, camera.type) + '\n');
  output.Write(Counted(cameras.size(), "camera") + '\n');
}

}  // namespace

void RunList(const Options& options, TextOutput& output) {
  FinderSession session(options.library);
  std::vector<CameraSnapshot> cameras;
  ForEachFoundCamera(session.Finder(), [&](auto& camera) { cameras.push_back(SnapshotOf(camera)); });
  if (options.json)
    PrintObjects(cameras, options, output);
  else
    PrintRows(cameras, output);
}

}  // namespace tarnfind
