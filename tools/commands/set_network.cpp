#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <thread>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/mac_address.h"
#include "tools/network_batch.h"
#include "tools/search_view.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::ICameraInfo;

constexpr double kUsualSeconds = 5;
/// How often the list is read back.
constexpr std::chrono::milliseconds kReadBackInterval{500};
constexpr std::chrono::milliseconds kCheckInterval{50};

enum class Outcome { kApplied, kUnknown, kNotApplied, kGone, kUnconfirmed, kNotSent, kNotTried, kRefused, kNotFound };

struct OutcomeRow {
  Outcome outcome;
  const char* word;
  ExitCode code;
  std::optional<bool> sent;  ///< empty: cannot be known
};
/// Row number = outcome.
constexpr OutcomeRow kOutcomes[] = {
    {Outcome::kApplied, "applied", kDone, true},
    {Outcome::kUnknown, "cannot be known", kDone, true},
    {Outcome::kNotApplied, "not applied", kMissed, true},
    {Outcome::kGone, "gone", kMissed, true},
    {Outcome::kUnconfirmed, "not confirmed", kFailed, true},
    {Outcome::kNotSent, "failed", kFailed, std::nullopt},
    {Outcome::kNotTried, "not tried", kFailed, false},
    {Outcome::kRefused, "refused", kWrongUse, false},
    {Outcome::kNotFound, "not found", kFailed, false},
};
static_assert([] {
  for (std::size_t i = 0; i < std::size(kOutcomes); ++i)
    if (static_cast<std::size_t>(kOutcomes[i].outcome) != i) return false;
  return true;
}());

const OutcomeRow& RowOf(Outcome outcome) {
  return kOutcomes[static_cast<std::size_t>(outcome)];
}

/// One camera's way through the command.
struct Plan {
  NetworkChange change;
  CameraSnapshot before;
  CameraSnapshot wanted;
  Reference<ICameraInfo> camera;  ///< until it has been sent
  Outcome outcome = Outcome::kUnconfirmed;
  std::string text;  ///< what is to be said of the outcome
  bool settled = false;

  void Settle(Outcome result, std::string why) {
    outcome = result;
    text = std::move(why);
    settled = true;
  }
  bool CanBeReadBack() const { return !Unapplied(wanted, before).empty(); }
};

/// Index in the listing by hardware address in its standard form.
using PlaceByMac = std::map<std::string, std::size_t>;

PlaceByMac ByMac(const std::vector<CameraSnapshot>& cameras) {
  PlaceByMac result;
  for (std::size_t i = 0; i < cameras.size(); ++i)
    result.emplace(StandardMac(cameras[i].mac).value_or(cameras[i].mac), i);
  return result;
}

/// Fills the plan from the listing, and settles it where it must not be sent. given: IP addresses that earlier plans
/// give, with the camera's hardware address.
void MakePlan(Plan& plan, Listing& listing, const PlaceByMac& byMac, std::map<std::string, std::string>& given,
              bool force) {
  const auto place = byMac.find(plan.change.mac);
  if (place == byMac.end())
    return plan.Settle(Outcome::kNotFound, byMac.empty() ? kEmptyList : "the server's list has no such camera");
  plan.before = listing.cameras[place->second];
  plan.wanted = Changed(plan.before, plan.change);
  plan.camera = std::move(listing.objects[place->second]);
  for (const Objection& objection : Objections(plan.before, plan.change, listing.cameras)) {
    if (force && objection.mayBeForced) continue;
    return plan.Settle(Outcome::kRefused,
                       objection.text + (objection.mayBeForced ? "; --force sends it all the same" : ""));
  }
  if (!plan.change.ip) return;
  const auto [taken, added] = given.emplace(plan.wanted.ip, plan.change.mac);
  if (!added) plan.Settle(Outcome::kRefused, fmt::format("{} goes to {} already", plan.wanted.ip, taken->second));
}

/// Sets and sends one camera's settings, on the finder's thread.
bool Send(ICameraFinder& finder, ICameraInfo& camera, const CameraSnapshot& wanted, bool credentials, int type) {
  if (credentials) camera.SetCredentials(Utf16FromUtf8(wanted.user).c_str(), Utf16FromUtf8(wanted.password).c_str());
  camera.SetNetworkSettings(Utf16FromUtf8(wanted.ip).c_str(), Utf16FromUtf8(wanted.subnetMask).c_str(),
                            wanted.dhcp ? 1 : 0, Utf16FromUtf8(wanted.gateway).c_str());
  return (type == 4 ? finder.SendNetworkCommandType4(&camera) : finder.SendNetworkCommandType1(&camera)) != 0;
}

void SendPlan(FinderSession& session, Plan& plan, int type) {
  const auto sent = std::make_shared<bool>(false);
  const std::shared_ptr<ICameraInfo> camera = std::move(plan.camera);
  try {
    session.Call("sending the settings of " + plan.change.mac,
                 [camera, wanted = plan.wanted, credentials = plan.change.user || plan.change.password, type,
                  sent](ICameraFinder& finder) { *sent = Send(finder, *camera, wanted, credentials, type); });
  } catch (const std::exception& error) {
    return plan.Settle(Outcome::kNotSent, "whether the settings arrived cannot be known: " + ErrorText(error));
  }
  if (!*sent)
    plan.Settle(Outcome::kNotSent,
                "the server refused the command, or did not answer; whether it arrived cannot be known");
}

/// What the list says of the settings; settles the plan where nothing better can come.
void Compare(Plan& plan, const std::vector<CameraSnapshot>& listed, const PlaceByMac& byMac) {
  const auto place = byMac.find(plan.change.mac);
  if (place == byMac.end()) {
    plan.outcome = listed.empty() ? Outcome::kUnconfirmed : Outcome::kGone;
    plan.text = listed.empty() ? kEmptyList : "the server no longer lists the camera";
    return;
  }
  const std::vector<Difference> differences = Unapplied(plan.wanted, listed[place->second]);
  if (differences.empty())
    return plan.Settle(Outcome::kApplied, plan.change.password ? "the password cannot be read back" : "");
  plan.outcome = Outcome::kNotApplied;
  plan.text = "sent and listed differ: " + JoinedDifferences(differences);
}

void Pause(Clock::time_point until) {
  while (Clock::now() < until && !platform::Interrupted()) std::this_thread::sleep_for(kCheckInterval);
}

/// Reads the list until every plan is settled or the time is over.
void ReadBack(FinderSession& session, std::vector<Plan>& plans, std::chrono::milliseconds planned) {
  for (Plan& plan : plans)
    if (!plan.settled && !plan.CanBeReadBack())
      plan.Settle(Outcome::kUnknown, plan.change.password ? "a password cannot be read back"
                                                          : "the list has told these settings before they were sent");
  const Clock::time_point deadline = Clock::now() + planned;
  const auto open = [&] { return std::any_of(plans.begin(), plans.end(), [](const Plan& p) { return !p.settled; }); };
  while (open()) {
    if (platform::Interrupted()) {  // an interrupted call may still run, and no other may begin beside it
      for (Plan& plan : plans)
        if (!plan.settled && plan.text.empty()) plan.text = "interrupted before the list was read";
      return;
    }
    try {
      const std::vector<CameraSnapshot> listed = session.List().cameras;
      const PlaceByMac byMac = ByMac(listed);
      for (Plan& plan : plans)
        if (!plan.settled) Compare(plan, listed, byMac);
    } catch (const std::exception& error) {
      for (Plan& plan : plans)
        if (!plan.settled) plan.outcome = Outcome::kUnconfirmed, plan.text = ErrorText(error);
    }
    if (Clock::now() >= deadline) return;
    Pause(std::min(deadline, Clock::now() + kReadBackInterval));
  }
}

std::string_view Shown(const std::string& setting) {
  return setting.empty() ? "(none)" : std::string_view(setting);
}

/// Shows what will change and asks.
bool IsAgreed(const std::vector<Plan>& plans, const Options& options) {
  std::string question;
  for (const Plan& plan : plans) {
    if (plan.settled) continue;
    question += OneLine(fmt::format("{} {}", plan.change.mac, plan.before.model)) + '\n';
    const std::vector<Difference> differences = Differences(plan.before, plan.wanted, options.showPasswords);
    for (const Difference& d : differences)
      question += d.before == d.after ? fmt::format("  {:<9} another one\n", d.label)  // both are hidden
                                      : fmt::format("  {:<9} {} -> {}\n", d.label, Shown(d.before), Shown(d.after));
    if (differences.empty()) question += "  nothing differs from the list; the settings are sent all the same\n";
  }
  if (question.empty()) return true;
  platform::Write(platform::Stream::kError, question);
  if (options.yes) return true;
  platform::Write(platform::Stream::kError, "Send this? [y/N] ");
  const std::optional<std::string> answer = platform::ReadLine(true);
  return answer && (*answer == "y" || *answer == "Y" || *answer == "yes");
}

Json DifferencesArray(const std::vector<Difference>& differences) {
  Json array = Json::array();
  for (const Difference& d : differences)
    array.push_back({{"setting", d.label}, {"before", d.before}, {"after", d.after}});
  return array;
}

void Print(const Plan& plan, const Options& options, TextOutput& output) {
  const OutcomeRow& row = RowOf(plan.outcome);
  if (!options.json) {
    output.Write(
        fmt::format("{} {}{}{}\n", plan.change.mac, row.word, plan.text.empty() ? "" : ": ", Printable(plan.text)));
    return;
  }
  Json object = {{"event", "set-network"},
                 {"mac", plan.change.mac},
                 {"outcome", row.word},
                 {"sent", row.sent ? Json(*row.sent) : Json(nullptr)},
                 {"text", plan.text},
                 {"changes", DifferencesArray(Differences(plan.before, plan.wanted, options.showPasswords))}};
  output.Write(JsonLine(object));
}

/// The worst of all exit codes.
ExitCode CodeOf(const std::vector<Plan>& plans) {
  ExitCode worst = kDone;
  for (const Plan& plan : plans) {
    const ExitCode code = RowOf(plan.outcome).code;
    if (worst == kDone || (worst == kMissed && code != kDone) || code == kFailed) worst = code;
  }
  return worst;
}

/// The numbers of each outcome: "2 cameras: 1 applied, 1 refused", and the same in JSON.
std::pair<std::string, Json> Summary(const std::vector<Plan>& plans) {
  std::map<Outcome, std::size_t> counts;
  for (const Plan& plan : plans) ++counts[plan.outcome];
  Json object = {{"event", "summary"}, {"command", "set-network"}, {"cameras", plans.size()}};
  std::string text = Counted(plans.size(), "camera");
  for (const auto& [outcome, count] : counts) {
    object[RowOf(outcome).word] = count;
    text += fmt::format("{}{} {}", outcome == counts.begin()->first ? ": " : ", ", count, RowOf(outcome).word);
  }
  return {text, object};
}

/// Settings may have been sent, so their outcome is told even where the output fails: by the exit code where its reader
/// has gone, and by the error's text where it cannot be written.
void PrintAll(const std::vector<Plan>& plans, const Options& options, TextOutput& output) {
  const auto [text, object] = Summary(plans);
  try {
    for (const Plan& plan : plans)
      // The failure of a single camera is the line on standard error.
      if (options.json || plans.size() > 1 || RowOf(plan.outcome).code == kDone) Print(plan, options, output);
    if (options.json)
      output.Write(JsonLine(object));
    else if (plans.size() > 1)
      output.Write(text + '\n');
  } catch (const ReaderGone&) {
  } catch (const Failure& failure) {
    throw Failure(fmt::format("{}; {}", failure.what(), text));
  }
}

NetworkBatch BatchOf(const Options& options) {
  if (!options.batchFile.empty()) {
    if (!options.change.mac.empty() || !options.change.IsEmpty() || options.askPassword ||
        !options.passwordFile.empty())
      throw WrongUse("--from names the cameras and their settings; leave out the others");
    return ReadNetworkBatch(options.batchFile);
  }
  NetworkBatch batch;
  batch.changes = {options.change};
  if (options.change.mac.empty()) throw WrongUse("which camera? give its hardware address, or a file with --from");
  if (options.askPassword) {
    platform::Write(platform::Stream::kError, "Password for the camera: ");
    batch.changes[0].password = platform::ReadLine(false);
    if (!batch.changes[0].password) throw WrongUse("no password was given");
  }
  if (!options.passwordFile.empty()) {
    std::string text = ReadTextFile(options.passwordFile);
    text.erase(std::min(text.find_first_of("\r\n"), text.size()));
    if (text.empty()) throw WrongUse(fmt::format("\"{}\" has no password in its first line", options.passwordFile));
    batch.changes[0].password = std::move(text);
  }
  if (const std::string wrong = Contradiction(batch.changes[0]); !wrong.empty()) throw WrongUse(wrong);
  return batch;
}

}  // namespace

void RunSetNetwork(const Options& options, TextOutput& output) {
  if (!options.remainingFile.empty() && options.batchFile.empty())
    throw WrongUse("--remaining keeps lines of a file; give that with --from");
  if (!options.yes && !platform::IsInputTerminal())
    throw WrongUse("standard input is no terminal, so that nobody can be asked; give --yes to send without a question");
  if (options.askPassword && !platform::IsInputTerminal())
    throw WrongUse("standard input is no terminal to ask for a password; give --password-file -");
  platform::CatchInterrupts();  // before a prompt, so that Ctrl-C leaves a terminal that echoes
  const NetworkBatch batch = BatchOf(options);

  FinderSession session;
  session.Connect(options.library, {});
  Listing listing = session.List();
  const PlaceByMac byMac = ByMac(listing.cameras);
  std::vector<Plan> plans(batch.changes.size());
  std::map<std::string, std::string> given;
  for (std::size_t i = 0; i < plans.size(); ++i) {
    plans[i].change = batch.changes[i];
    MakePlan(plans[i], listing, byMac, given, options.force);
  }
  if (!IsAgreed(plans, options)) throw Failure("nothing was sent");

  for (Plan& plan : plans)
    if (!plan.settled && !platform::Interrupted())
      SendPlan(session, plan, options.networkCommandType);
    else if (!plan.settled)
      plan.Settle(Outcome::kNotTried, "interrupted before it was sent");
  ReadBack(session, plans, *ReceivingTime(options, kUsualSeconds));

  std::vector<std::size_t> remaining;
  for (std::size_t i = 0; i < plans.size(); ++i)
    if (RowOf(plans[i].outcome).code != kDone) remaining.push_back(i);
  std::string unkept;
  try {
    if (!options.remainingFile.empty()) WriteRemaining(batch, remaining, options.remainingFile);
  } catch (const Failure& failure) {
    unkept = failure.what();
  }
  PrintAll(plans, options, output);
  if (!unkept.empty()) throw Failure(unkept);
  const ExitCode code = CodeOf(plans);
  if (code == kDone) return;
  throw CommandError(
      code, plans.size() == 1
                ? fmt::format("{} {}: {}", plans[0].change.mac, RowOf(plans[0].outcome).word, plans[0].text)
                : fmt::format("{} of {} remain to be done", remaining.size(), Counted(plans.size(), "camera")));
}

}  // namespace tarnfind
