#include "tools/capture/conversation.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/exceptions.h"
#include "dbi/dbi.h"
#include "protocol/block_format.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"
#include "tools/mac_address.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

using namespace Tarn::CameraFinding;
using capture::Frame;
using capture::FrameEvent;
using capture::Function;
using capture::PartKind;

constexpr std::size_t kMostStreams = 10'000;

struct CommandRow {
  std::uint32_t code;
  const char* name;
  const char* key;  ///< of the entry that names a camera; null for none
};
constexpr auto kCommands = std::to_array<CommandRow>({
    {fcSendMacAddress, "send-mac", "MAC"},
    {fcListFoundCameras, "list", nullptr},
    {fcGetInfoByIp, "info", "GetInfoByIp"},
    {fcBare, "bare", nullptr},
    {fcSetNetwork, "set-network", "MAC"},
});

/// The text of the exception, where reading throws.
template <class Reading>
std::string DamageOf(Reading reading) {
  try {
    reading();
    return {};
  } catch (const Kestrel::KestrelException& error) {
    return error.what();
  }
}

void AddUnlessEmpty(std::vector<std::string>& texts, const std::string& text) {
  if (!text.empty()) texts.push_back(text);
}

void ReadReply(std::span<const std::uint8_t> reply, RecordedCommand& command) {
  if (command.code == fcListFoundCameras) {
    command.cameras = ReadCameraReply(reply);
  } else if (command.code == fcGetInfoByIp) {
    Kestrel::ValueList list;
    DecodeReply(reply, list);
    CameraRecord camera;
    ReadRecord(list, camera);
    if (!camera.mac.empty()) command.cameras.push_back(std::move(camera));
  }
}

RecordedCommand ReadCommand(const Frame& frame) {
  RecordedCommand command;
  command.name = "unknown command";
  const auto request = frame.Find(PartKind::kRequest);
  const auto reply = frame.Find(PartKind::kReply);
  command.damage = DamageOf([&] {
    Kestrel::ValueList list;
    if (request) DecodeRequest(*request, list);
    list.Get(kCommandKey, command.code);
    const auto row = std::ranges::find(kCommands, command.code, &CommandRow::code);
    if (row == kCommands.end()) {
      command.name = fmt::format("command {}", command.code);
      return;
    }
    command.name = row->name;
    if (row->key) list.Get(row->key, command.argument);
  });
  if (!command.damage.empty() || !reply || reply->empty()) return command;
  command.damage = DamageOf([&] { ReadReply(*reply, command); });
  return command;
}

std::string Answer(const Frame& frame, const RecordedCommand& command) {
  if (!command.damage.empty()) return "damaged: " + Printable(command.damage);
  const auto reply = frame.Find(PartKind::kReply);
  if (!reply || reply->empty()) return "answered with nothing";
  if (command.code == fcListFoundCameras) return Counted(command.cameras.size(), "camera");
  if (command.code != fcGetInfoByIp) return "answered";
  if (command.cameras.empty()) return "no such camera";
  const CameraRecord& camera = command.cameras[0];
  return Printable(fmt::format("camera {} {} \"{}\"", camera.mac, camera.ip, camera.model));
}

}  // namespace

std::string ShortName(const Frame& frame) {
  if (frame.header.event != FrameEvent::kCall) {
    const auto event = static_cast<std::size_t>(frame.header.event);
    return std::string(event < capture::kEventNames.size() ? capture::kEventNames[event] : "unknown event");
  }
  if (frame.header.function >= capture::kFunctionCount) return "unknown function";
  const std::string_view name = capture::kFunctionNames[frame.header.function];
  const std::size_t prefix = name.find('_');
  return std::string(prefix == std::string_view::npos ? name.substr(name.find("Get")) : name.substr(prefix + 1));
}

RecordedEvent Conversation::Read(const Frame& frame) {
  const std::uint64_t stream = frame.header.stream;
  if (registered_.size() > kMostStreams) registered_.clear();
  RecordedEvent event;
  switch (frame.header.event) {
    case FrameEvent::kCall:
      event = ReadCall(frame);
      break;
    case FrameEvent::kBlock:
      event = ReadBlock(frame);
      break;
    case FrameEvent::kDelivered:
      event.what = "delivered";
      event.failed = !frame.header.result;
      if (event.failed) event.outcome = "the finder's callback threw an exception";
      break;
    case FrameEvent::kDetach:
      registered_[stream] = std::max(0, registered_[stream] - 1);
      event.what = "the stream lets the callback go";
      break;
    default:
      event.what = "unknown event";
  }
  event.frame = &frame;
  if (frame.IsCut()) event.outcome += event.outcome.empty() ? "not whole" : " (not whole)";
  return event;
}

RecordedEvent Conversation::ReadCall(const Frame& frame) {
  RecordedEvent event;
  event.what = ShortName(frame);
  event.failed = !frame.header.result;
  event.outcome = event.failed ? "failed" : "";
  if (frame.IsCall(Function::kSetGenericDataCallback)) {
    const auto arguments = frame.GetArguments();
    const bool registers = !arguments.empty() && arguments[0] == kRegisterDataCallback;
    event.what += registers ? ", register" : ", unregister";
    int& registered = registered_[frame.header.stream];
    if (!event.failed) registered = std::max(0, registered + (registers ? 1 : -1));
  } else if (frame.IsCall(Function::kGetLastError)) {
    event.failed = false;
    event.outcome = "no error record, so the finder takes the call for a success";
    if (const auto part = frame.Find(PartKind::kError)) event.error = capture::ReadErrorRecord(*part);
    if (event.error)
      event.outcome = Printable(fmt::format("error {} of class {} ({}): {} [{}]", event.error->errorCode,
                                            event.error->errorClass, event.error->className,
                                            Utf8FromUtf16(event.error->description), event.error->additionalText));
  } else if (frame.IsCall(Function::kSendSynchDSPCommand)) {
    event.command = ReadCommand(frame);
    const RecordedCommand& command = *event.command;
    event.what = command.name + (command.argument.empty() ? "" : " " + Printable(command.argument));
    event.outcome = event.failed ? "failed" : Answer(frame, command);
    AddUnlessEmpty(command.code == fcGetInfoByIp ? event.ips : event.macs, command.argument);
    for (const CameraRecord& camera : command.cameras) {
      AddUnlessEmpty(event.macs, camera.mac);
      AddUnlessEmpty(event.ips, camera.ip);
    }
  }
  return event;
}

RecordedEvent Conversation::ReadBlock(const Frame& frame) {
  RecordedEvent event;
  const auto block = frame.Find(PartKind::kBlock).value_or(std::span<const std::uint8_t>());
  const auto arguments = frame.GetArguments();
  const auto kind = static_cast<std::int32_t>(arguments.empty() ? 0 : arguments[0]);
  const auto known = registered_.find(frame.header.stream);
  event.block = OutcomeOf(kind, frame.header.messageType, block, known == registered_.end() || known->second > 0);
  event.failed = !event.block->delivered;
  event.what = fmt::format("block type {}, {}", frame.header.messageType, Counted(block.size(), "byte"));
  event.outcome = (event.failed ? "dropped: " : "") + Printable(event.block->what);
  // With pictures and values the text is the server's name of the camera, which need not be its hardware address.
  if (frame.header.messageType >= fmtCameraKind3 || StandardMac(event.block->mac))
    AddUnlessEmpty(event.macs, event.block->mac);
  AddUnlessEmpty(event.ips, event.block->ip);
  return event;
}

}  // namespace tarnfind
