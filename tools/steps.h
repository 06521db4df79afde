/// The steps on the way from the library's file to the server's first answer.
#pragma once

#include <cstddef>
#include <iterator>

namespace tarnfind {

enum class Step { kLibrary, kPlatformLibrary, kFinder, kChannel, kCallback, kList, kAnswer };

struct StepRow {
  Step step;
  const char* name;   ///< in output for people and in JSON
  const char* doing;  ///< shown while the step lasts
};
/// Row number = step.
inline constexpr StepRow kSteps[] = {
    {Step::kLibrary, "library", "loading the library"},
    {Step::kPlatformLibrary, "platform library", "loading the platform library"},
    {Step::kFinder, "finder", "asking the server for a live stream"},
    {Step::kChannel, "channel", "connecting"},
    {Step::kCallback, "callback", "registering the callback"},
    {Step::kList, "list", "asking for the list of cameras"},
    {Step::kAnswer, "answer", "waiting for an answer"},
};
static_assert([] {
  for (std::size_t i = 0; i < std::size(kSteps); ++i)
    if (static_cast<std::size_t>(kSteps[i].step) != i) return false;
  return true;
}());

constexpr const StepRow& RowOf(Step step) {
  return kSteps[static_cast<std::size_t>(step)];
}

}  // namespace tarnfind
