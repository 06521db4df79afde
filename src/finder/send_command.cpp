#include <cstdint>
#include <functional>
#include <span>

#include "base/text_conversion.h"
#include "finder/ipc_finder.h"
#include "protocol/request_wire.h"

namespace Tarn::CameraFinding {

namespace {

/// A command's answer; the memory belongs to the platform library.
class DspReply {
 public:
  DspReply() = default;
  /// Nothing escapes: the reply is the platform library's either way.
  ~DspReply() {
    if (!data_) return;
    try {
      if (!TarnDBI_ReleaseReference(data_)) ThrowLastDBIError();
    } catch (...) {  // the error, or no memory to tell of it
    }
  }
  DspReply(const DspReply&) = delete;
  DspReply& operator=(const DspReply&) = delete;

  void** PutData() { return &data_; }
  std::uint32_t* PutSize() { return &size_; }
  /// Empty where the answer has no bytes, or none were handed over.
  std::span<const std::uint8_t> GetBytes() const {
    return {static_cast<const std::uint8_t*>(data_), data_ ? size_ : 0};
  }

 private:
  std::uint32_t size_ = 0;
  void* data_ = nullptr;
};

}  // namespace

void IPCFinder::SendCommand(const Kestrel::ValueList& command, Kestrel::ValueList& reply) {
  Exchange(command, [&reply](std::span<const std::uint8_t> bytes) { DecodeReply(bytes, reply); });
}

void IPCFinder::Exchange(const Kestrel::ValueList& command,
                         const std::function<void(std::span<const std::uint8_t>)>& read) {
  if (!streamInfo_ || !EnsureStreamStarted(*streamInfo_)) return;
  const Kestrel::ReferencePointer<Kestrel::Buffer> request = EncodeRequest(command);
  DspReply answer;
  if (!TarnLiveStream_SendSynchDSPCommand(streamInfo_->stream.get(), request->GetData(),
                                          Kestrel::ClipSizeT(request->GetLength()), answer.PutData(), answer.PutSize()))
    ThrowLastDBIError();
  if (!answer.GetBytes().empty()) read(answer.GetBytes());
}

}  // namespace Tarn::CameraFinding
