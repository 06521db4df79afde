/// The finder's channel: one live stream of the platform library, opened and started on first use. Every call to the
/// platform library is made here.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "dbi/dbi.h"

namespace Tarn::CameraFinding {

/// Shared by the finder and its data-callback registration; the last owner destroys the stream.
struct LiveStreamInfo {
  std::shared_ptr<TTarnLiveStream> stream;  ///< destroyed with TarnLiveStream_Destroy
  std::atomic<bool> started{false};         ///< opened and started
  void* channelArgument = nullptr;
};

/// The answer to a command; its memory belongs to the platform library until the destructor gives it back.
class DspReply {
 public:
  DspReply() = default;
  /// A failing release is not reported, because a destructor cannot throw and nobody could act on it.
  ~DspReply();
  DspReply(const DspReply&) = delete;
  DspReply& operator=(const DspReply&) = delete;

  void** PutData() { return &data_; }
  std::uint32_t* PutSize() { return &size_; }
  /// Empty where the answer has no bytes, or a size without data.
  std::span<const std::uint8_t> GetBytes() const {
    return {static_cast<const std::uint8_t*>(data_), data_ ? size_ : 0};
  }

 private:
  std::uint32_t size_ = 0;
  void* data_ = nullptr;
};

// Errors of all that follows: where the platform library reports a failure, DBIException is made from its last error
// record. A failure without a record counts as success.

/// Creates the stream on the server; it is not opened. Throws DBIException.
std::shared_ptr<LiveStreamInfo> CreateLiveStream(void* server, void* channelArgument);

/// Opens and starts the stream unless that is done. False where there is no handle or the platform library reports an
/// error; never throws. Two first calls on different threads may both open and start it.
bool EnsureStreamStarted(LiveStreamInfo& info);

/// Sends a request and blocks until the server has answered. Requires a started stream. Throws DBIException; the reply
/// is filled then as well, if the platform library handed one over.
void SendRequest(LiveStreamInfo& info, std::span<const std::uint8_t> request, DspReply& reply);

/// Registers (kRegisterDataCallback) or unregisters (kUnregisterDataCallback) a receiver. Throws DBIException.
void SetStreamDataCallback(LiveStreamInfo& info, std::uint32_t mode, IGenericDataReceivedCallback* callback);

}  // namespace Tarn::CameraFinding
