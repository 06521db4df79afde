#include <nlohmann/json.hpp>

#include "tools/capture/camera_set.h"
#include "tools/capture/difference_text.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"

namespace tarnfind {

void RunDiff(const Options& options, TextOutput& output) {
  const CameraSet before = ReadCameraSet(options.capture.file);
  const CameraSet after = ReadCameraSet(options.capture.target);
  const std::vector<CameraDifference> differences = Compare(before, after);
  for (const CameraDifference& difference : differences)
    output.Write(DifferenceText(difference, before, after, options.json));
  if (options.json) output.Write(JsonLine(ComparisonSummary("diff", before, after, differences.size())));
  if (!differences.empty()) throw Failure(DifferenceCount(differences.size()));
}

}  // namespace tarnfind
