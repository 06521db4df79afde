/// The finder behind ICameraFinder: turns each call of the wizard into one command, and holds the registration of the
/// wizard's callback.
///
/// Threads  No lock of its own; operations block on the server on the caller's thread.
/// Errors   SendMacAddress, RequestInfoByIp, SendBareCommand and both SendNetworkCommandType… swallow every exception;
///          ListFoundCameras and SetNewCameraDataCallback let them through. Wizards rely on the difference.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "com/com_wrapper.h"
#include "finder/camera_data_callback.h"
#include "finder/live_stream.h"
#include "finder/module_hold.h"
#include "protocol/camera_record.h"
#include "tarn/camera_finding.h"
#include "valuelist/buffer.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

/// How finder operations talk to the server.
class IPCFindingSender {
 public:
  virtual ~IPCFindingSender() = default;
  /// Sends the command and fills the reply, which stays untouched where the channel cannot be opened or the server
  /// answers with nothing. Throws DBIException, and what a malformed reply throws.
  virtual void SendCommand(const Kestrel::ValueList& command, Kestrel::ValueList& reply) = 0;
};

class IPCFinder : public ICameraFinder, public IPCFindingSender {
 public:
  /// Creates the stream; throws DBIException.
  IPCFinder(void* server, void* channelArgument);
  ~IPCFinder() override;

  void SendMacAddress(const OLECHAR* macAddress) override;
  void RequestInfoByIp(const OLECHAR* ipAddress) override;
  void ListFoundCameras(IFoundCameraReceiver* receiver) override;
  void SetNewCameraDataCallback(INewCameraDataCallback* callback) override;
  std::uint8_t SendNetworkCommandType1(ICameraInfo* camera) override;
  void SendBareCommand() override;
  std::uint8_t SendNetworkCommandType4(ICameraInfo* camera) override;

  /// For a command that is given as a list. The finder's own operations encode theirs without one (request_wire.h).
  void SendCommand(const Kestrel::ValueList& command, Kestrel::ValueList& reply) override;

 private:
  /// Sends the request, and calls read with the reply's bytes if there are any. Returns without sending where the
  /// channel cannot be opened. Throws DBIException, and what read throws.
  void Exchange(const Kestrel::Buffer& request, const std::function<void(std::span<const std::uint8_t>)>& read);
  /// The same, with the reply read into a list.
  void Exchange(const Kestrel::Buffer& request, Kestrel::ValueList& reply);
  std::uint8_t SendNetworkCommand(ICameraInfo* camera, std::uint32_t networkCommandType);
  bool HasStartedStream();

  std::unique_ptr<CameraDataCallback> dataCallback_;
  std::shared_ptr<LiveStreamInfo> streamInfo_;
  ModuleHold moduleHold_;
};

}  // namespace Tarn::CameraFinding

template <>
inline constexpr IID Kestrel::kInterfaceId<Tarn::CameraFinding::ICameraFinder> = Tarn::CameraFinding::IID_ICameraFinder;
