/// Scenarios of the simulator, checked and played through the simulator itself: the tool knows it only as a platform
/// library that reads TARN_SIMULATOR_SCENARIO when a finder is made.
#include <fmt/format.h>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/library.h"

namespace tarnfind {

namespace {

constexpr char kVariable[] = "TARN_SIMULATOR_SCENARIO";

/// What the simulator says when it reads that scenario; empty where a finder can be made.
std::string ComplaintAbout(const std::string& file, const Library& library) {
  platform::SetEnvironment(kVariable, file);
  Tarn::CameraFinding::ICameraFinder* finder = nullptr;
  try {
    library.create(nullptr, nullptr, &finder);
  } catch (const std::exception& error) {
    return error.what();
  }
  const Reference<Tarn::CameraFinding::ICameraFinder> owner(finder);
  return {};
}

/// Throws NoChannel where the platform library is no simulator: it does not mind a scenario that is not there.
void RequireSimulator(const std::string& file, const Library& library) {
  if (ComplaintAbout(file + "/no scenario", library).find(kVariable) != std::string::npos) return;
  throw NoChannel(RowOf(Step::kPlatformLibrary).name,
                  fmt::format("{} plays no scenarios; put the simulator's library in its place", library.platformFile));
}

void Check(const std::string& file, const std::string& libraryFile) {
  const Library library = LoadFinderLibrary(libraryFile);
  RequireSimulator(file, library);
  const std::string complaint = ComplaintAbout(file, library);
  // Anything else is a fault that the scenario itself asks for.
  if (complaint.starts_with(file + ":") || complaint.starts_with("TARN_SIMULATOR_")) throw WrongUse(OneLine(complaint));
}

}  // namespace

void RunScenario(const Options& options, TextOutput& output) {
  Check(options.scenarioFile, options.library);
  if (options.playScenario) return RunSearch(options, output);
  output.Write(
      options.json
          ? JsonLine(
                {{"event", "summary"}, {"command", "scenario check"}, {"file", options.scenarioFile}, {"good", true}})
          : fmt::format("{} can be played.\n", options.scenarioFile));
}

}  // namespace tarnfind
