/// The finder's channel: one live stream of the platform library, opened and started on first use.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "dbi/dbi.h"

namespace Tarn::CameraFinding {

/// Shared by the finder and its data-callback registration; the last owner destroys the stream.
struct LiveStreamInfo {
  std::shared_ptr<TTarnLiveStream> stream;  ///< destroyed with TarnLiveStream_Destroy
  std::atomic<bool> started{false};         ///< opened and started
  void* channelArgument = nullptr;
};

/// Throws DBIException made from the platform library's last error record; returns where there is none, and the caller
/// goes on as though its call had succeeded.
void ThrowLastDBIError();

/// Creates the stream on the server; it is not opened. Throws DBIException.
std::shared_ptr<LiveStreamInfo> CreateLiveStream(void* server, void* channelArgument);

/// Opens and starts the stream unless that is done. False where there is no handle or the platform library reports an
/// error; never throws. Two first calls on different threads may both open and start it.
bool EnsureStreamStarted(LiveStreamInfo& info);

/// Registers (kRegisterDataCallback) or unregisters (kUnregisterDataCallback) a receiver. Throws DBIException.
void SetStreamDataCallback(LiveStreamInfo& info, std::uint32_t mode, IGenericDataReceivedCallback* callback);

}  // namespace Tarn::CameraFinding
