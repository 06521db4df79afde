/// A search whose cameras are compared with those of a file, as they arrive. The search itself is the ordinary one; its
/// JSON lines are read here, as diff reads them from a file.
#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/capture/camera_set.h"
#include "tools/capture/difference_text.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/search_view.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

CameraSet Only(const CameraSet& cameras, const std::string& key) {
  const auto found = cameras.find(key);
  return found == cameras.end() ? CameraSet() : CameraSet{*found};
}

class Comparison final : public TextOutput {
 public:
  Comparison(const CameraSet& before, bool json, TextOutput& output) : before_(before), json_(json), output_(output) {}

  /// Takes the lines of the search.
  void Write(std::string_view text) override {
    line_ += text;
    for (std::size_t end = line_.find('\n'); end != std::string::npos; end = line_.find('\n')) {
      const Json object = Json::parse(line_.substr(0, end));
      line_.erase(0, end + 1);
      if (object.value("event", "") == "summary") hasList_ = object.value("list", "") == "arrived";
      const std::string key = TakeCameraObject(found_, object).value_or("");
      if (!key.empty()) Tell(key);
    }
  }

  /// Tells of the cameras that the search has not shown: they are gone. Returns how many cameras differ. Throws
  /// CommandError where nobody knows what is missing, because the search has ended before the server's list, or has
  /// heard of no camera at all, as from a server that does not answer.
  std::size_t Finish() {
    if (!hasList_)
      throw CommandError(kWrongUse,
                         "the list of known cameras has not arrived, so missing ones cannot be told; "
                         "let the search run longer with --for");
    if (told_.empty() && !before_.empty())
      throw CommandError(kWrongUse, fmt::format("{}, so missing ones cannot be told", kEmptyList));
    for (const auto& [key, camera] : before_) Tell(key);
    const std::size_t differences = Compare(before_, found_).size();
    if (json_)
      output_.Write(JsonLine(ComparisonSummary("search --against", before_, found_, differences)));
    else if (differences == 0)
      output_.Write(fmt::format("{}, no difference\n", Counted(found_.size(), "camera")));
    return differences;
  }

 private:
  /// Tells how the camera differs, unless the last line about it said the same.
  void Tell(const std::string& key) {
    const CameraSet before = Only(before_, key), found = Only(found_, key);
    const auto differences = Compare(before, found);
    const std::string text = differences.empty() ? "" : DifferenceText(differences[0], before, found, json_);
    std::string& told = told_[key];
    if (text == told) return;
    told = text;
    if (!text.empty()) return output_.Write(text);
    output_.Write(json_ ? JsonLine({{"event", "difference"}, {"difference", "same"}, {"mac", key}})
                        : fmt::format("{:<9} {}\n", "same", Printable(key)));
  }

  const CameraSet& before_;
  const bool json_;
  TextOutput& output_;
  std::string line_;
  bool hasList_ = false;
  CameraSet found_;
  std::map<std::string, std::string> told_;  ///< what was told last of a camera; empty: nothing differs
};

}  // namespace

void RunSearchAgainst(const Options& options, TextOutput& output) {
  const CameraSet before = ReadCameraSet(options.capture.against);
  Comparison comparison(before, options.json, output);
  Options search = options;
  search.json = true;
  try {
    RunSearch(search, comparison);
  } catch (const Missed&) {  // --expect was not met; what was found is compared all the same
    comparison.Finish();
    throw;
  } catch (const Failure& failure) {
    // Exit code 1 is for cameras that differ.
    throw CommandError(kWrongUse, failure.what(), failure.Step());
  }
  if (const std::size_t differences = comparison.Finish(); differences > 0) throw Failure(DifferenceCount(differences));
}

}  // namespace tarnfind
