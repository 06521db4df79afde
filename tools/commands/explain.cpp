#include <fmt/format.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/capture/capture_file.h"
#include "tools/capture/explanation.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"

namespace tarnfind {

namespace {

/// The capture that is named, or the one that is being recorded.
std::string PathOf(const Options& options) {
  if (!options.capture.capture.empty()) return options.capture.capture;
  const char* const recorded = std::getenv("TARN_CAPTURE");
  if (!recorded || !*recorded) throw WrongUse("name a capture, or set TARN_CAPTURE");
  return recorded;
}

/// From the load of the library to its end. A capture may hold several, and what one had says nothing of the next.
struct Run {
  Run(const std::string& address, std::uint64_t number) : section(number), explainer(address) {}
  const std::uint64_t section;  ///< of the capture
  Conversation conversation;
  Explainer explainer;
};

/// Where the text of a step begins.
constexpr std::size_t kTextColumn = 12;

std::string Indented(std::string text) {
  for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
    text.insert(at + 1, kTextColumn, ' ');
  return text;
}

void WriteText(const std::string& address, const Explanation& explanation, const std::string& note,
               TextOutput& output) {
  output.Write(fmt::format("Where is {}?\n\n", address));
  for (const ExplainedStep& step : explanation.steps)
    output.Write(fmt::format("{} {:<9} {}\n", step.fine ? " " : "!", step.name, Indented(step.text)));
  output.Write(fmt::format("\n{}\n", explanation.verdict));
  for (const std::string& next : explanation.next) output.Write(fmt::format("Try: {}\n", next));
  if (!note.empty()) output.Write(fmt::format("Note: {}\n", note));
}

void WriteJson(const std::string& address, const Explanation& explanation, const std::string& note,
               TextOutput& output) {
  Json steps = Json::array();
  for (const ExplainedStep& step : explanation.steps)
    steps.push_back({{"step", step.name}, {"fine", step.fine}, {"text", step.text}});
  Json object = {{"event", "explanation"},         {"address", address}, {"found", explanation.found},
                 {"verdict", explanation.verdict}, {"steps", steps},     {"next", explanation.next}};
  if (!note.empty()) object["note"] = note;
  output.Write(JsonLine(object));
}

}  // namespace

void RunExplain(const Options& options, TextOutput& output) {
  const std::string& address = options.capture.address;
  CaptureFile file(PathOf(options));
  std::optional<Run> run;
  std::uint64_t earlier = 0;
  std::string verdictBefore;
  const std::string note = ReadFrames(file, [&](const capture::Frame& frame) {
    if (run && run->section != frame.section) {
      ++earlier;
      verdictBefore = run->explainer.Explain().verdict;
      run.reset();
    }
    if (!run) run.emplace(address, frame.section);
    run->explainer.Add(run->conversation.Read(frame));
  });
  Explanation explanation = (run ? run->explainer : Explainer(address)).Explain();
  if (earlier > 0)
    explanation.steps.insert(
        explanation.steps.begin(),
        {"earlier",
         fmt::format("{} recorded before this one, which is not told here. Of the last of them: {}",
                     earlier == 1 ? "One run was" : fmt::format("{} runs were", earlier), verdictBefore),
         true});
  (options.json ? WriteJson : WriteText)(address, explanation, note, output);
}

}  // namespace tarnfind
