#include "simulator/commands.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/text_conversion.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "simulator/last_error.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

/// Reads the payload of a command.
template <class Message>
Message Received(Kestrel::ValueList& command, Message message = {}) {
  Serialize(command, Direction::kRead, message);
  return message;
}

Answer ReportByMac(Kestrel::ValueList& command, World& world) {
  if (const auto camera = world.FindByMac(Received<MacAddressMessage>(command).mac))
    world.Push(*camera, fmtCameraKind3);
  return {};
}

Answer ListPresent(Kestrel::ValueList& command, World& world) {
  if (Received<ListFoundMessage>(command, {false}).resendPreviousPictures) world.PushPreviousPictures();
  return world.PresentRecords();
}

Answer ReportByIp(Kestrel::ValueList& command, World& world) {
  const auto camera = world.FindByIp(Received<InfoByIpMessage>(command).ip);
  if (!camera) return {};
  world.Push(*camera, fmtCameraKind3);
  return world.RecordOf(*camera);
}

Answer SearchAnew(Kestrel::ValueList&, World& world) {
  world.StartTimeline();
  return {};
}

void SetUnlessSentinel(std::string& credential, const std::string& received) {
  if (received != CameraLogin().loginUser) credential = received;
}

Answer SetNetwork(Kestrel::ValueList& command, World& world) {
  const auto received = Received<NetworkCommand>(command);
  if (received.networkCommandType != 1 && received.networkCommandType != 4)
    throw Refused(kMalformedRequest,
                  "There is no network command of type " + std::to_string(received.networkCommandType));
  const auto camera = world.FindByMac(received.mac);
  if (!camera) return {};
  world.Change(*camera, [&](CameraRecord& record) {
    record.ip = received.ip;
    record.subnetMask = received.subnetMask;
    record.gateway = received.gateway;
    record.dhcpMode = received.dhcpMode;
    SetUnlessSentinel(record.loginUser, received.loginUser);
    SetUnlessSentinel(record.loginPassword, received.loginPassword);
  });
  world.Push(*camera, fmtCameraKind1);
  return {};
}

struct CommandRow {
  std::uint32_t code;
  Answer (*execute)(Kestrel::ValueList& command, World& world);
};

constexpr auto kCommands = std::to_array<CommandRow>({
    {fcSendMacAddress, ReportByMac},
    {fcListFoundCameras, ListPresent},
    {fcGetInfoByIp, ReportByIp},
    {fcBare, SearchAnew},
    {fcSetNetwork, SetNetwork},
});

}  // namespace

Answer ExecuteCommand(Kestrel::ValueList& command, World& world) {
  std::uint32_t code = 0;
  if (!command.Get(kCommandKey, code)) throw Refused(kMalformedRequest, "The request holds no command");
  const auto row = std::find_if(kCommands.begin(), kCommands.end(), [&](const auto& r) { return r.code == code; });
  if (row == kCommands.end()) throw Refused(kMalformedRequest, "There is no command " + std::to_string(code));
  return row->execute(command, world);
}

Kestrel::ValueList ReplyOf(const Answer& answer) {
  Kestrel::ValueList reply;
  if (const auto* const record = std::get_if<World::Record>(&answer)) WriteRecord(reply, **record);
  if (const auto* const records = std::get_if<std::vector<World::Record>>(&answer)) {
    std::vector<CameraRecord> copies;
    copies.reserve(records->size());
    for (const World::Record& record : *records) copies.push_back(*record);
    WriteRecordList(reply, kCameraInfoListKey, copies);
  }
  return reply;
}

}  // namespace simulator
