#include "finder/live_stream.h"

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "com/swallow_exceptions.h"

namespace Tarn::CameraFinding {
namespace {

/// Returns where there is no error record: the caller goes on as though its call had succeeded.
void ThrowLastDBIError() {
  DBIErrorRecord record{};
  if (!TarnDBIGetLastError(&record)) return;
  throw DBIException(record.errorClass, record.errorCode, record.className, record.description, record.additionalText);
}

}  // namespace

DspReply::~DspReply() {
  if (!data_) return;
  Kestrel::SwallowExceptions([this] {
    if (!TarnDBI_ReleaseReference(data_)) ThrowLastDBIError();
  });
}

std::shared_ptr<LiveStreamInfo> CreateLiveStream(void* server, void* channelArgument) {
  auto info = std::make_shared<LiveStreamInfo>();
  TTarnLiveStream* handle = nullptr;
  if (!TarnServer_CreateLiveStream(server, &handle)) ThrowLastDBIError();
  // A null handle is kept as an empty pointer: there is nothing to destroy. The constructor destroys the handle itself
  // where there is no memory for its control block.
  if (handle) info->stream = std::shared_ptr<TTarnLiveStream>(handle, TarnLiveStream_Destroy);
  info->channelArgument = channelArgument;
  return info;
}

bool EnsureStreamStarted(LiveStreamInfo& info) {
  if (!info.stream) return false;
  if (info.started.load()) return true;
  return Kestrel::SwallowExceptions([&info] {
    const StreamOpenParameters parameters = {sizeof(StreamOpenParameters), 0, info.channelArgument};
    void* output1 = nullptr;
    void* output2 = nullptr;
    if (!TarnLiveStream_Open(info.stream.get(), &parameters, 0, &output1, &output2, 0)) ThrowLastDBIError();
    if (!TarnLiveStream_Start(info.stream.get())) ThrowLastDBIError();
    info.started.store(true);
  });
}

void SendRequest(LiveStreamInfo& info, std::span<const std::uint8_t> request, DspReply& reply) {
  const std::uint32_t size = Kestrel::ClipSizeT(request.size());
  if (!TarnLiveStream_SendSynchDSPCommand(info.stream.get(), request.data(), size, reply.PutData(), reply.PutSize()))
    ThrowLastDBIError();
}

void SetStreamDataCallback(LiveStreamInfo& info, std::uint32_t mode, IGenericDataReceivedCallback* callback) {
  if (!info.stream) return;
  if (!TarnLiveStream_SetGenericDataCallback(info.stream.get(), mode, callback)) ThrowLastDBIError();
}

}  // namespace Tarn::CameraFinding
