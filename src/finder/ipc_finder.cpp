#include "finder/ipc_finder.h"

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/swallow_exceptions.h"
#include "protocol/camera_info.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"

namespace Tarn::CameraFinding {
namespace {

/// Every network command carries these as they stand, because a wizard's camera cannot tell the real values.
constexpr char kPluginNamePlaceholder[] = "PluginnamePlatzHalter";
constexpr char kVendorDisplayName[] = "VendorDisplayName";
constexpr char kNoAddress[] = "0.0.0.0";
constexpr std::uint8_t kNetworkCommandCtt = 2;

/// The record that a network command carries. Calls each getter once, in this order: a wizard may rely on it.
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

}  // namespace

IPCFinder::IPCFinder(void* server, void* channelArgument) : streamInfo_(CreateLiveStream(server, channelArgument)) {}

// The registration ends here, before moduleHold_ counts the receivers that are left. It holds its own share of the
// stream, so the stream outlives the unregistration.
IPCFinder::~IPCFinder() {
  streamInfo_.reset();
  dataCallback_.reset();
}

void IPCFinder::SendMacAddress(const OLECHAR* macAddress) {
  Kestrel::SwallowExceptions([&] {
    Kestrel::ValueList reply;
    Exchange(*EncodeRequest(MacAddressMessage{Kestrel::Utf8FromNulTerminated(macAddress)}), reply);
  });
}

void IPCFinder::RequestInfoByIp(const OLECHAR* ipAddress) {
  Kestrel::SwallowExceptions([&] {
    Kestrel::ValueList reply;
    Exchange(*EncodeRequest(InfoByIpMessage{Kestrel::Utf8FromNulTerminated(ipAddress)}), reply);
    // Dropped, because what the server found arrives at the callback.
    CameraRecord record;
    ReadRecord(reply, record);
  });
}

void IPCFinder::ListFoundCameras(IFoundCameraReceiver* receiver) {
  if (!HasStartedStream()) return;
  std::vector<CameraRecord> cameras;
  Exchange(*EncodeRequest(ListFoundMessage{}),
           [&cameras](std::span<const std::uint8_t> reply) { cameras = ReadCameraReply(reply); });
  if (!receiver) return;
  for (CameraRecord& record : cameras) {
    const Kestrel::ComPtr<ICameraInfo> camera = MakeCameraInfo(std::move(record));
    receiver->CameraFound(camera.Get());
  }
}

void IPCFinder::SetNewCameraDataCallback(INewCameraDataCallback* callback) {
  if (!HasStartedStream()) return;
  // The new one is registered before the old one is unregistered, so that no block is lost in between, and the old one
  // stays where registering throws.
  dataCallback_ = std::make_unique<CameraDataCallback>(callback, streamInfo_, moduleHold_);
}

std::uint8_t IPCFinder::SendNetworkCommandType1(ICameraInfo* camera) {
  return SendNetworkCommand(camera, 1);
}

void IPCFinder::SendBareCommand() {
  Kestrel::SwallowExceptions([this] {
    Kestrel::ValueList reply;
    Exchange(*EncodeRequest(BareMessage{}), reply);
  });
}

std::uint8_t IPCFinder::SendNetworkCommandType4(ICameraInfo* camera) {
  return SendNetworkCommand(camera, 4);
}

std::uint8_t IPCFinder::SendNetworkCommand(ICameraInfo* camera, std::uint32_t networkCommandType) {
  return Kestrel::SwallowExceptions([&] {
    NetworkCommand command;
    static_cast<CameraRecord&>(command) = RecordFromCamera(*camera);
    command.networkCommandType = networkCommandType;
    Kestrel::ValueList reply;
    Exchange(*EncodeRequest(command), reply);
  });
}

void IPCFinder::SendCommand(const Kestrel::ValueList& command, Kestrel::ValueList& reply) {
  Exchange(*EncodeRequest(command), reply);
}

void IPCFinder::Exchange(const Kestrel::Buffer& request, Kestrel::ValueList& reply) {
  Exchange(request, [&reply](std::span<const std::uint8_t> bytes) { DecodeReply(bytes, reply); });
}

void IPCFinder::Exchange(const Kestrel::Buffer& request,
                         const std::function<void(std::span<const std::uint8_t>)>& read) {
  if (!HasStartedStream()) return;
  DspReply reply;
  SendRequest(*streamInfo_, request.GetBytes(), reply);
  if (!reply.GetBytes().empty()) read(reply.GetBytes());
}

bool IPCFinder::HasStartedStream() {
  return streamInfo_ && EnsureStreamStarted(*streamInfo_);
}

}  // namespace Tarn::CameraFinding
