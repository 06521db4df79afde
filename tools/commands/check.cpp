/// How far the way to the server goes, step by step.
#include <fmt/format.h>

#include <algorithm>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kCheckInterval{100};

/// Prints each step as it ends.
class StepPrinter {
 public:
  StepPrinter(const Options& options, TextOutput& output) : json_(options.json), output_(output) {}

  void PrintDone(Step step, std::optional<milliseconds> duration, const std::string& detail) {
    Print(step, "ok", duration, detail);
  }
  /// Unreported steps before the failed one have succeeded; those after it were not tried. The first unreported step
  /// gets the time since the last report.
  void PrintFailed(const std::string& stepName, const std::string& error) {
    const milliseconds sinceReport = MillisecondsSince(lastReport_);
    const std::size_t first = next_;
    const auto duration = [&] { return next_ == first ? std::optional(sinceReport) : std::nullopt; };
    while (next_ < std::size(kSteps) && kSteps[next_].name != stepName) Print(kSteps[next_].step, "ok", duration(), {});
    if (next_ < std::size(kSteps)) Print(kSteps[next_].step, "failed", duration(), error);
    while (next_ < std::size(kSteps)) Print(kSteps[next_].step, "-", {}, "not tried");
    PrintMeaning(false, error);
  }
  void PrintMeaning(bool good, const std::string& meaning) {
    if (json_)
      output_.Write(JsonLine({{"event", "summary"}, {"command", "check"}, {"good", good}, {"meaning", meaning}}));
    else if (good)  // what is bad stands on standard error
      output_.Write(meaning + '\n');
  }

 private:
  void Print(Step step, const char* result, std::optional<milliseconds> duration, const std::string& detail) {
    const char* const name = RowOf(step).name;
    if (json_) {
      output_.Write(JsonLine({{"event", "step"},
                              {"step", name},
                              {"result", result},
                              {"milliseconds", duration ? Json(duration->count()) : Json(nullptr)},
                              {"detail", detail}}));
    } else {
      const std::string time = duration ? fmt::format("{} ms", duration->count()) : "";
      std::string line = fmt::format("{:<17} {:<7} {:>9}  {}", name, result, time, Printable(detail));
      line.erase(line.find_last_not_of(' ') + 1);
      output_.Write(line + '\n');
    }
    next_ = static_cast<std::size_t>(step) + 1;
    lastReport_ = Clock::now();
  }

  bool json_;
  TextOutput& output_;
  std::size_t next_ = 0;  ///< the first step that is not printed yet
  Clock::time_point lastReport_ = Clock::now();
};

bool AnythingArrives(FinderSession& session, milliseconds planned) {
  const Clock::time_point deadline = Clock::now() + planned;
  while (Clock::now() < deadline && !platform::Interrupted())
    if (!session.TakeUntil(std::min(deadline, Clock::now() + kCheckInterval)).empty()) return true;
  return false;
}

}  // namespace

void RunCheck(const Options& options, TextOutput& output) {
  StepPrinter printer(options, output);
  FinderSession session;
  try {
    session.Connect(options.library, {}, [&](Step step, std::optional<milliseconds> took, const std::string& detail) {
      printer.PrintDone(step, took, detail);
    });
    const Clock::time_point listing = Clock::now();
    const std::vector<CameraSnapshot> cameras = session.List().cameras;
    printer.PrintDone(Step::kList, MillisecondsSince(listing), Counted(cameras.size(), "camera"));

    const Clock::time_point asking = Clock::now();
    // About a camera that the server knows, so that an answer is due.
    if (!cameras.empty()) AskAbout(session, RowOf(Step::kAnswer).doing, cameras.front().ip, cameras.front().mac);
    const milliseconds planned = *ReceivingTime(options, kUsualAnswerSeconds);
    if (AnythingArrives(session, planned)) {
      printer.PrintDone(Step::kAnswer, MillisecondsSince(asking), "the server sends");
      printer.PrintMeaning(true, fmt::format("The server answers. It knows {}.", Counted(cameras.size(), "camera")));
    } else if (platform::Interrupted()) {
      throw Failure("interrupted while waiting for an answer", RowOf(Step::kAnswer).name);
    } else if (cameras.empty()) {
      printer.PrintDone(Step::kAnswer, MillisecondsSince(asking), "nothing arrived, and nothing was due");
      printer.PrintMeaning(
          true, fmt::format("The channel is open. {}; nothing arrived within {}.", kEmptyList, Seconds(planned)));
    } else {
      throw Failure(
          fmt::format("the channel is open and the list arrives, but the server sent nothing within {} when it "
                      "was asked about {}; it may have refused the callback or the question without a word",
                      Seconds(planned), Printable(cameras.front().mac)),
          RowOf(Step::kAnswer).name);
    }
  } catch (const CommandError& error) {
    printer.PrintFailed(error.Step(), error.what());
    throw;
  }
}

}  // namespace tarnfind
