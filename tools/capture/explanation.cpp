#include "tools/capture/explanation.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <utility>

#include "dbi/dbi.h"
#include "protocol/block_format.h"
#include "protocol/finder_messages.h"
#include "tools/camera_snapshot.h"
#include "tools/mac_address.h"
#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {
namespace {

using capture::FrameEvent;
using capture::Function;

constexpr std::size_t kFullLines = 20;
constexpr std::size_t kMostOthers = 100'000;
constexpr std::uint64_t kSlow = 1'000'000'000;
constexpr std::size_t kMakersPrefix = 8;  // "00:40:8C"
constexpr std::size_t kNearestShown = 5;

/// Signed, because a capture may begin with a packet that is not the oldest.
double Seconds(std::uint64_t nanoseconds) {
  return static_cast<double>(static_cast<std::int64_t>(nanoseconds)) / 1e9;
}

std::string Name(Function function) {
  return std::string(capture::kFunctionNames[static_cast<std::size_t>(function)]);
}

/// In how many places two addresses of the same length differ.
std::size_t Distance(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return a.size() + b.size();
  std::size_t distance = 0;
  for (std::size_t i = 0; i < a.size(); ++i) distance += a[i] != b[i];
  return distance;
}

constexpr auto kCommandsThatReportBack = "tarnfind send-mac or tarnfind info";

}  // namespace

void Explainer::Lines::Add(std::string line) {
  last = std::move(line);
  if (first.size() < kFullLines) first.push_back(last);
  ++count;
}

std::string Explainer::Lines::Join() const {
  std::string text;
  for (const std::string& line : first) text += "\n  " + line;
  if (count > first.size()) text += fmt::format("\n  and {} more", count - first.size());
  return text;
}

Explainer::Explainer(const std::string& address) : askedByMac_(address.find(':') != std::string::npos) {
  (askedByMac_ ? mac_ : ip_) = address;
}

std::string Explainer::At(const RecordedEvent& event) const {
  return fmt::format("at {:.3f} s, packet {}", Seconds(event.frame->GetStart() - start_), event.frame->number);
}

void Explainer::Hear(const RecordedEvent& event, const std::string& line) {
  const auto time = std::chrono::duration_cast<WallTime::duration>(std::chrono::nanoseconds(event.frame->time));
  lastHeard_ = fmt::format("{}, {}.", UtcTime(WallTime(time)), line);
}

/// Whether what has these addresses, of which either may be empty, is the camera.
bool Explainer::IsTheCamera(const std::string& mac, const std::string& ip) const {
  const bool hasMac = !mac.empty() && mac != kUnknownMac;
  const bool sameMac = hasMac && !mac_.empty() && StandardMac(mac).value_or(mac) == mac_;
  const bool sameIp = !ip.empty() && ip == ip_;
  return askedByMac_ ? sameMac || (sameIp && !hasMac) : sameMac || sameIp;
}

bool Explainer::IsAbout(const RecordedEvent& event) const {
  if (event.block)
    return IsTheCamera(event.macs.empty() ? "" : event.macs.front(), event.ips.empty() ? "" : event.ips.front());
  if (!event.command) return false;
  const RecordedCommand& command = *event.command;
  return IsTheCamera(command.argument, "") || IsTheCamera("", command.argument) ||
         std::ranges::any_of(command.cameras, [&](const auto& camera) { return IsTheCamera(camera.mac, camera.ip); });
}

/// Takes the camera's other address from a message about it. Asked for an IP address, it is the camera that had it
/// last.
void Explainer::Learn(const std::string& mac, const std::string& ip) {
  if (!IsTheCamera(mac, ip)) return;
  if (askedByMac_) {
    if (!ip.empty() && ip != kNoIpAddress) ip_ = ip;
  } else if (ip == ip_ && !mac.empty() && mac != kUnknownMac) {
    mac_ = StandardMac(mac).value_or(mac);
  }
}

/// Whether a step of the way to the first block is missing because the capture begins after it: then all steps before
/// it are missing too, and something was recorded.
bool Explainer::IsBeforeCapture(Function step) const {
  for (const Function earlier : {Function::kCreateLiveStream, Function::kOpen, Function::kStart}) {
    if (calls_.contains(earlier)) return false;
    if (earlier == step) break;
  }
  return frames_ > 0;
}

void Explainer::Add(const RecordedEvent& event) {
  if (frames_++ == 0) start_ = event.frame->GetStart();
  if (event.command)
    for (const auto& camera : event.command->cameras) Learn(camera.mac, camera.ip);
  if (event.block && event.block->camera) Learn(event.block->camera->mac, event.block->camera->ip);
  const bool about = IsAbout(event);
  if (event.block) return AddBlock(event, about);
  if (event.frame->header.event == FrameEvent::kDelivered && event.failed) thrown_.Add(At(event));
  if (event.frame->header.event == FrameEvent::kDetach) registered_.erase(event.frame->header.stream);
  if (event.frame->header.event == FrameEvent::kCall) AddCall(event);
  if (event.command) AddCommand(event, about);
}

void Explainer::AddCall(const RecordedEvent& event) {
  const capture::FrameHeader& header = event.frame->header;
  if (header.function >= capture::kFunctionCount) return;
  const auto function = static_cast<Function>(header.function);
  if (function == Function::kGetLastError) {
    const auto failure = lastFailure_.find(header.thread);
    if (failure == lastFailure_.end()) return;
    Calls& calls = calls_[failure->second];
    if (event.error) {
      ++calls.failedWithRecord;
      --calls.failedWithoutRecord;
      calls.lastFailed = true;
      calls.lastError = event.outcome;
      const bool lineIsKept = failedCommands_.count == failedCommands_.first.size() && failedCommands_.count > 0;
      if (failure->second == Function::kSendSynchDSPCommand && lineIsKept)
        failedCommands_.first.back() += ": " + event.outcome;
    }
    lastFailure_.erase(failure);
    return;
  }
  Calls& calls = calls_[function];
  ++calls.count;
  calls.longest = std::max(calls.longest, header.duration);
  calls.lastFailed = false;  // a failure without a record counts as success
  if (event.failed) {
    ++calls.failedWithoutRecord;
    if (lastFailure_.size() < kFullLines || lastFailure_.contains(header.thread))
      lastFailure_[header.thread] = function;
  }
  if (function != Function::kSetGenericDataCallback) return;
  const auto arguments = event.frame->GetArguments();
  const bool registers = !arguments.empty() && arguments[0] == kRegisterDataCallback;
  triedToRegister_ |= registers;
  if (event.failed) return;
  everRegistered_ += registers;
  if (registered_.size() < kMostOthers) registered_[header.stream] += registers ? 1 : -1;
}

void Explainer::AddCommand(const RecordedEvent& event, bool about) {
  const RecordedCommand& command = *event.command;
  if (event.failed) failedCommands_.Add(fmt::format("{} {}", event.what, At(event)));
  const bool names = !command.argument.empty() && about;
  if (names) commands_.Add(fmt::format("{} {}: {}", event.what, At(event), event.outcome));
  if (command.code == Tarn::CameraFinding::fcListFoundCameras) {
    ++lists_;
    unreadLists_ += event.failed || !command.damage.empty();
  }
  for (const auto& camera : command.cameras) {
    if (!IsTheCamera(camera.mac, camera.ip)) {
      if (others_.size() < kMostOthers)
        others_.try_emplace(CameraKey(camera.mac, camera.ip), Printable(camera.ip + " " + camera.model));
      continue;
    }
    replies_.Add(Printable(
        fmt::format("answer to {} {}: {} {} \"{}\"", command.name, At(event), camera.mac, camera.ip, camera.model)));
    Hear(event, replies_.last);
  }
}

void Explainer::AddBlock(const RecordedEvent& event, bool about) {
  const BlockOutcome& block = *event.block;
  const std::uint64_t time = event.frame->time;
  if (blocks_++ > 0 && time > lastBlockTime_) longestSilence_ = std::max(longestSilence_, time - lastBlockTime_);
  lastBlockTime_ = time;
  const std::string line =
      fmt::format("block type {} {}: {}", event.frame->header.messageType, At(event), Printable(block.what));
  if (about) Hear(event, block.delivered ? line : line + ", dropped");
  if (!block.delivered) {
    const bool nobody = event.macs.empty() && event.ips.empty();
    if (about)
      droppedOfIt_.Add(line);
    else if (nobody)
      droppedOfNobody_.Add(line);
    else
      ++droppedOfOthers_;
    return;
  }
  if (!block.camera) {
    if (about) pictures_.Add(line);
    return;
  }
  if (!about) {
    if (others_.size() < kMostOthers)
      others_.try_emplace(CameraKey(block.camera->mac, block.camera->ip),
                          Printable(block.camera->ip + " " + block.camera->model));
    return;
  }
  deliveries_.Add(line);
  lastDelivery_ = line;
  lastWasGone_ = event.frame->header.messageType == Tarn::CameraFinding::fmtCameraKind4;
}

ExplainedStep Explainer::ExplainCalls(const char* name, Function function, const char* done, const char* never) const {
  const auto found = calls_.find(function);
  if (found == calls_.end()) {
    if (IsBeforeCapture(function)) return {name, "Not in this capture, which begins later.", true};
    return {name, never, false};
  }
  const Calls& calls = found->second;
  std::string text;
  if (calls.lastFailed)
    text = fmt::format("{} failed: {}.", Name(function), calls.lastError);
  else if (calls.count > calls.failedWithoutRecord)
    text = done;
  if (calls.failedWithRecord > 0 && !calls.lastFailed)
    text += fmt::format(" It had failed {} before: {}.", Counted(calls.failedWithRecord, "time"), calls.lastError);
  if (calls.failedWithoutRecord > 0)
    text += fmt::format("{}{} failed {} without an error record, which the finder takes for success.",
                        text.empty() ? "" : " ", Name(function), Counted(calls.failedWithoutRecord, "time"));
  if (calls.longest >= kSlow) text += fmt::format(" The longest call took {:.1f} s.", Seconds(calls.longest));
  return {name, text, !calls.lastFailed && calls.failedWithoutRecord == 0};
}

ExplainedStep Explainer::ExplainCallback() const {
  constexpr char kNever[] = "No callback was registered, so the server's blocks reach nobody.";
  constexpr char kBefore[] = "The callback was registered before this capture begins, and let go in it.";
  const char* const none = triedToRegister_ || !IsBeforeCapture(Function::kStart) ? kNever : kBefore;
  ExplainedStep step = ExplainCalls("callback", Function::kSetGenericDataCallback,
                                    everRegistered_ > 0 ? "A callback was registered." : none, none);
  const bool registered = std::ranges::any_of(registered_, [](const auto& stream) { return stream.second > 0; });
  if (everRegistered_ > 0)
    step.text += registered ? " It was still registered at the end." : " It was let go at the end.";
  if (thrown_.count > 0) {
    step.text += fmt::format(" {} ended in an exception of the finder's callback:{}",
                             Counted(thrown_.count, "delivery"), thrown_.Join());
    step.fine = false;
  }
  return step;
}

ExplainedStep Explainer::ExplainNearest() const {
  std::vector<std::pair<std::size_t, std::string>> near;
  std::size_t sameMaker = 0;
  for (const auto& [other, name] : others_) {
    if (mac_.empty()) break;
    const std::size_t distance = Distance(mac_, other);
    sameMaker += mac_.substr(0, kMakersPrefix) == other.substr(0, kMakersPrefix);
    if (distance <= 2)
      near.emplace_back(distance, fmt::format("{} differs in {}: {}", Printable(other),
                                              distance == 1 ? "one digit" : "two digits", name));
  }
  std::ranges::sort(near);
  ExplainedStep step{"nearest", "", near.empty()};
  for (std::size_t i = 0; i < near.size() && i < kNearestShown; ++i) step.text += "\n  " + near[i].second;
  if (!near.empty()) step.text = "Cameras with nearly this address:" + step.text;
  if (sameMaker > 0)
    step.text += fmt::format("{}{} of the same maker's prefix {} heard of.", near.empty() ? "" : "\n",
                             Counted(sameMaker, "camera"), sameMaker == 1 ? "was" : "were");
  return step;
}

Explanation Explainer::Explain() const {
  Explanation explanation;
  auto& steps = explanation.steps;
  steps.push_back({"library",
                   frames_ == 0
                       ? "Nothing was recorded: no finder was made, or the recorder is not in the library's place."
                       : fmt::format("{} recorded.{}", Counted(frames_, "event"),
                                     IsBeforeCapture(Function::kCreateLiveStream)
                                         ? " What came before this capture, the making of the finder too, is not known."
                                         : ""),
                   frames_ > 0});
  steps.push_back(ExplainCalls("stream", Function::kCreateLiveStream, "The live stream was created.",
                               "No live stream was created: the wizard has made no finder."));
  steps.push_back(
      ExplainCalls("open", Function::kOpen, "The stream was opened.",
                   "The stream was never opened: nothing was asked of the finder, or the call has not returned."));
  steps.push_back(ExplainCalls("start", Function::kStart, "The stream was started.",
                               "The stream was never started, or the call has not returned."));
  steps.push_back(ExplainCallback());

  ExplainedStep commands = ExplainCalls("commands", Function::kSendSynchDSPCommand, "Commands were sent.",
                                        "No command was sent, or none has been answered.");
  if (failedCommands_.count > 0) {
    commands.text += fmt::format("\n{} failed:{}", Counted(failedCommands_.count, "command"), failedCommands_.Join());
    commands.fine = false;
  }
  commands.text +=
      commands_.count == 0
          ? std::string(failedCommands_.count > 0 ? "\n" : " ") + "None names it."
          : fmt::format("\n{} it:{}", commands_.count == 1 ? "One names" : fmt::format("{} name", commands_.count),
                        commands_.Join());
  steps.push_back(commands);
  if (const auto release = calls_.find(Function::kReleaseReference);
      release != calls_.end() && release->second.failedWithRecord + release->second.failedWithoutRecord > 0)
    steps.push_back(
        {"replies",
         fmt::format("{} could not be released, which costs memory and no cameras.",
                     Counted(release->second.failedWithRecord + release->second.failedWithoutRecord, "reply")),
         false});
  steps.push_back(
      {"replies",
       replies_.count > 0
           ? fmt::format("It stands in {}:{}", Counted(replies_.count, "answer"), replies_.Join())
           : fmt::format("It stands in no answer; {} asked for{}.",
                         lists_ == 0 ? "no list was" : Counted(lists_, "list") + (lists_ == 1 ? " was" : " were"),
                         unreadLists_ == 0 ? "" : fmt::format(", and {} failed or cannot be read", unreadLists_)),
       replies_.count > 0});
  std::string blocks =
      deliveries_.count > 0
          ? fmt::format("{} about it reached the wizard:{}", Counted(deliveries_.count, "block"), deliveries_.Join())
          : fmt::format("{} arrived, and none with its record reached the wizard.", Counted(blocks_, "block"));
  if (pictures_.count > 0)
    blocks += fmt::format("\n{} with pictures or values of it reached the wizard:{}", Counted(pictures_.count, "block"),
                          pictures_.Join());
  if (longestSilence_ >= kSlow)
    blocks += fmt::format("\nThe longest time without a block was {:.1f} s.", Seconds(longestSilence_));
  steps.push_back({"blocks", blocks, deliveries_.count > 0});
  steps.push_back({"last", lastHeard_.empty() ? "Nothing was heard of it." : "Last heard of at " + lastHeard_,
                   !lastHeard_.empty()});
  if (droppedOfIt_.count + droppedOfNobody_.count + droppedOfOthers_ > 0) {
    std::string text;
    if (droppedOfIt_.count > 0)
      text += fmt::format("{} about it dropped without a word:{}", Counted(droppedOfIt_.count, "block"),
                          droppedOfIt_.Join());
    if (droppedOfNobody_.count > 0)
      text += fmt::format("{}{} dropped that tell no camera:{}", text.empty() ? "" : "\n",
                          Counted(droppedOfNobody_.count, "block"), droppedOfNobody_.Join());
    if (droppedOfOthers_ > 0)
      text += fmt::format("{}{} about other cameras dropped.", text.empty() ? "" : "\n",
                          Counted(droppedOfOthers_, "block"));
    steps.push_back({"dropped", text, false});
  }
  if (ExplainedStep nearest = ExplainNearest(); !nearest.text.empty() && deliveries_.count == 0)
    steps.push_back(std::move(nearest));
  Judge(explanation);
  return explanation;
}

/// The verdict is that of the first row that holds.
void Explainer::Judge(Explanation& explanation) const {
  const auto failed = [&](Function function) {
    const auto found = calls_.find(function);
    return found != calls_.end() && found->second.lastFailed;
  };
  const auto never = [&](Function function) { return !calls_.contains(function) && !IsBeforeCapture(function); };
  const bool hasNear = std::ranges::any_of(
      explanation.steps, [](const ExplainedStep& step) { return step.name == "nearest" && !step.fine; });
  struct Row {
    bool holds;
    std::string verdict;
    std::vector<std::string> next;
  };
  const Row rows[] = {
      {deliveries_.count > 0 && !lastWasGone_,
       "The wizard has it: " + lastDelivery_ + ".",
       {"If the wizard does not show it, look at its own filters."}},
      {deliveries_.count > 0,
       "The server has reported it gone: " + lastDelivery_ + ".",
       {"See whether the camera has power and network.", "Search again."}},
      {never(Function::kCreateLiveStream),
       "The finder was never made.",
       {"Put TarnCameraFinding-recorder in the library's place and start the search in the wizard."}},
      {failed(Function::kCreateLiveStream),
       "The finder has no stream to the server.",
       {"See whether the wizard is connected to the server and may use it."}},
      {failed(Function::kOpen) || failed(Function::kStart),
       "The stream could not be opened or started, so nothing was sent and nothing arrives.",
       {"See why the server refuses, by the error above.", "tarnfind check shows the same from here."}},
      {never(Function::kOpen), "Nothing was asked of the finder.", {"Start the search in the wizard."}},
      {droppedOfIt_.count > 0,
       "The server has sent a block about it, and the finder dropped it without a word.",
       {fmt::format("Look at the block: tarnfind show CAPTURE --filter {}, then tarnfind decode --hex.",
                    askedByMac_ ? "mac=" + mac_ : "ip=" + ip_),
        "The server's camera finder makes blocks that the finder cannot read: compare their versions."}},
      {failed(Function::kSetGenericDataCallback) && everRegistered_ == 0,
       "The callback was refused, so no block reaches the wizard.",
       {"See why the server refuses, by the error above."}},
      {triedToRegister_ && everRegistered_ == 0 && blocks_ == 0,
       "The callback was refused without an error record, so no block reaches the wizard, which does not know it.",
       {"See in the server's own log why it refuses.", "tarnfind list shows what the server knows all the same."}},
      {pictures_.count > 0,
       "Pictures or values of it reached the wizard, and no record of it was pushed.",
       {"A wizard that shows pushed cameras alone does not show it: ask for the list, as tarnfind list does."}},
      {replies_.count > 0,
       "It stands in an answer, and no block about it was pushed.",
       {"A wizard that shows pushed cameras alone does not show it: ask for the list, as tarnfind list does."}},
      {!triedToRegister_ && !IsBeforeCapture(Function::kStart),
       "No callback was registered, so what the server finds reaches nobody.",
       {"Start the search in the wizard; a list alone shows what the server knew before."}},
      {failedCommands_.count > 0 && blocks_ == 0,
       "Commands failed, and no block arrived.",
       {"See why the server refuses, by the errors above."}},
      {droppedOfNobody_.count > 0,
       "Blocks were dropped before they told which camera they are about; it may be among them.",
       {"Look at the dropped blocks: tarnfind show CAPTURE, then tarnfind decode --hex."}},
      {hasNear,
       "The server has found a camera with nearly this address.",
       {"Compare the address with the label on the camera."}},
      {blocks_ == 0,
       "No block arrived: the server has pushed nothing.",
       {"Let the search run longer.", std::string("Tell the server about it: ") + kCommandsThatReportBack + "."}},
      {true,
       "The server has never named it in this recording.",
       {"See whether the camera has power and network, and stands in the server's network.",
        std::string("Tell the server about it: ") + kCommandsThatReportBack + "."}},
  };
  for (const Row& row : rows) {
    if (!row.holds) continue;
    explanation.verdict = row.verdict;
    explanation.next = row.next;
    break;
  }
  explanation.found = deliveries_.count > 0 && !lastWasGone_;
}

}  // namespace tarnfind
