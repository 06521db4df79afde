#include "finder/ipc_finder.h"

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "com/bstr.h"
#include "protocol/camera_info.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"

namespace Tarn::CameraFinding {

namespace {

/// Sent as they stand in every network command: the wizard's camera does not tell these.
constexpr char kPluginNamePlaceholder[] = "PluginnamePlatzHalter";
constexpr char kVendorDisplayName[] = "VendorDisplayName";
constexpr char kNoAddress[] = "0.0.0.0";
constexpr std::uint8_t kNetworkCommandCtt = 2;

/// The record that a network command carries. Reads each getter once, in the order that the wizard relies on.
CameraRecord RecordFromCamera(ICameraInfo& camera) {
  std::string firmwareVersion = Kestrel::TakeBstrAsUtf8(camera.GetFirmwareVersion());
  std::string model = Kestrel::TakeBstrAsUtf8(camera.GetModelName());
  CameraNetwork network;
  network.gateway = Kestrel::TakeBstrAsUtf8(camera.GetGateway());
  network.subnetMask = Kestrel::TakeBstrAsUtf8(camera.GetSubnetMask());
  network.ip = Kestrel::TakeBstrAsUtf8(camera.GetIpAddress());
  network.mac = Kestrel::TakeBstrAsUtf8(camera.GetMacAddress());
  network.dhcpMode = camera.IsDhcpEnabled() ? 1 : 0;
  std::string password = Kestrel::TakeBstrAsUtf8(camera.GetPassword());
  std::string user = Kestrel::TakeBstrAsUtf8(camera.GetUserName());

  network.ni2 = {kNoAddress};
  network.nip = network.ni2.front();
  network.icb = network.gcb = network.rbl = network.pcl = true;
  return CameraRecord(CameraLogin(std::move(user), std::move(password), kNetworkCommandCtt), std::move(network),
                      CameraProduct({kPluginNamePlaceholder}, kVendorDisplayName, std::move(model),
                                    std::move(firmwareVersion), std::string()));
}

template <class Message>
Kestrel::ValueList CommandOf(Message message) {
  Kestrel::ValueList command;
  Serialize(command, Direction::kWrite, message);
  return command;
}

}  // namespace

IPCFinder::IPCFinder(void* server, void* channelArgument) : streamInfo_(CreateLiveStream(server, channelArgument)) {}

// The registration holds its own share of the stream, so the stream outlives the unregistration.
IPCFinder::~IPCFinder() {
  streamInfo_.reset();
  dataCallback_.reset();
}

void IPCFinder::SendMacAddress(const OLECHAR* macAddress) {
  try {
    Kestrel::ValueList reply;
    SendCommand(CommandOf(MacAddressMessage{Kestrel::Utf8FromNulTerminated(macAddress)}), reply);
  } catch (...) {  // the contract: no exception and no message
  }
}

void IPCFinder::RequestInfoByIp(const OLECHAR* ipAddress) {
  try {
    Kestrel::ValueList reply;
    SendCommand(CommandOf(InfoByIpMessage{Kestrel::Utf8FromNulTerminated(ipAddress)}), reply);
    // What the server found arrives at the callback; the reply is only read, so that a malformed one ends here.
    CameraRecord record;
    ReadRecord(reply, record);
  } catch (...) {  // the contract: no exception and no message
  }
}

void IPCFinder::ListFoundCameras(IFoundCameraReceiver* receiver) {
  if (!streamInfo_ || !EnsureStreamStarted(*streamInfo_)) return;
  std::vector<CameraRecord> cameras;
  Exchange(CommandOf(ListFoundMessage{}),
           [&cameras](std::span<const std::uint8_t> reply) { cameras = ReadCameraReply(reply); });
  if (!receiver) return;
  for (CameraRecord& record : cameras) {
    const Kestrel::ComPtr<ICameraInfo> camera = MakeCameraInfo(std::move(record));
    receiver->CameraFound(camera.Get());
  }
}

void IPCFinder::SetNewCameraDataCallback(INewCameraDataCallback* callback) {
  if (!streamInfo_ || !EnsureStreamStarted(*streamInfo_)) return;
  // Registered before the one before is unregistered; where registering throws, that one stays.
  dataCallback_ = std::make_unique<CameraDataCallback>(callback, streamInfo_);
}

std::uint8_t IPCFinder::SendNetworkCommandType1(ICameraInfo* camera) {
  return SendNetworkCommand(camera, 1);
}

void IPCFinder::SendBareCommand() {
  try {
    Kestrel::ValueList reply;
    SendCommand(CommandOf(BareMessage{}), reply);
  } catch (...) {  // the contract: no exception and no message
  }
}

std::uint8_t IPCFinder::SendNetworkCommandType4(ICameraInfo* camera) {
  return SendNetworkCommand(camera, 4);
}

std::uint8_t IPCFinder::SendNetworkCommand(ICameraInfo* camera, std::uint32_t networkCommandType) {
  try {
    NetworkCommand command;
    static_cast<CameraRecord&>(command) = RecordFromCamera(*camera);
    command.networkCommandType = networkCommandType;
    Kestrel::ValueList reply;
    SendCommand(CommandOf(std::move(command)), reply);
    return 1;
  } catch (...) {  // the contract: failure is the result 0
    return 0;
  }
}

}  // namespace Tarn::CameraFinding
