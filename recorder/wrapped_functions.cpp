/// The eight functions as the finder reaches them in the recorder: the linker turns its calls into __wrap_…, and
/// __real_… into the platform library's own. Each makes the one call, with its arguments as they are (a callback
/// is wrapped), and then records it.
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "dbi/dbi.h"
#include "recorder/recording.h"

namespace {

using capture::Function;
using capture::PartKind;
using recorder::Part;
using recorder::Recording;
using recorder::Stopwatch;

std::uint64_t Address(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

std::span<const std::byte> Bytes(const void* bytes, std::uint64_t size) {
  return {static_cast<const std::byte*>(bytes), bytes ? static_cast<std::size_t>(size) : 0};
}

capture::FrameHeader HeaderOf(Function function, const void* stream, std::uint8_t result, const Stopwatch& watch) {
  capture::FrameHeader header;
  header.duration = watch.GetNanoseconds();
  header.function = static_cast<std::uint8_t>(function);
  header.result = result;
  header.stream = Address(stream);
  return header;
}

template <std::size_t count>
Part Arguments(const std::uint64_t (&arguments)[count]) {
  return {PartKind::kArguments, std::as_bytes(std::span(arguments))};
}

void AppendBytes(std::vector<std::byte>& bytes, const void* source, std::size_t size) {
  const auto* const first = static_cast<const std::byte*>(source);
  bytes.insert(bytes.end(), first, first + size);
}

template <class Unit>
void AppendText(std::vector<std::byte>& bytes, const Unit* text) {
  const auto size = static_cast<std::uint32_t>((text ? std::char_traits<Unit>::length(text) : 0) * sizeof(Unit));
  AppendBytes(bytes, &size, sizeof size);
  if (size > 0) AppendBytes(bytes, text, size);
}

std::vector<std::byte> EncodeErrorRecord(const DBIErrorRecord& record) {
  std::vector<std::byte> bytes;
  AppendBytes(bytes, &record.errorClass, sizeof record.errorClass);
  AppendBytes(bytes, &record.errorCode, sizeof record.errorCode);
  AppendText(bytes, record.className);
  AppendText(bytes, record.description);
  AppendText(bytes, record.additionalText);
  return bytes;
}

}  // namespace

extern "C" {

std::uint8_t __real_TarnServer_CreateLiveStream(void* server, Tarn::TTarnLiveStream** stream);
std::uint8_t __real_TarnLiveStream_Open(Tarn::TTarnLiveStream* stream, const StreamOpenParameters* parameters,
                                        std::uint64_t reserved1, void** output1, void** output2,
                                        std::uint64_t reserved2);
std::uint8_t __real_TarnLiveStream_Start(Tarn::TTarnLiveStream* stream);
std::uint8_t __real_TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                          IGenericDataReceivedCallback* callback);
std::uint8_t __real_TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream* stream, const void* request,
                                                       std::uint32_t requestSize, void** reply,
                                                       std::uint32_t* replySize);
std::uint8_t __real_TarnDBI_ReleaseReference(void* reply);
void __real_TarnLiveStream_Destroy(Tarn::TTarnLiveStream* stream);
std::uint8_t __real_TarnDBIGetLastError(DBIErrorRecord* record);

std::uint8_t __wrap_TarnServer_CreateLiveStream(void* server, Tarn::TTarnLiveStream** stream) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnServer_CreateLiveStream(server, stream);
  if (Recording* const recording = Recording::Get()) {
    const std::uint64_t arguments[] = {Address(server)};
    recording->Add(HeaderOf(Function::kCreateLiveStream, stream ? *stream : nullptr, result, watch),
                   {Arguments(arguments)});
  }
  return result;
}

std::uint8_t __wrap_TarnLiveStream_Open(Tarn::TTarnLiveStream* stream, const StreamOpenParameters* parameters,
                                        std::uint64_t reserved1, void** output1, void** output2,
                                        std::uint64_t reserved2) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnLiveStream_Open(stream, parameters, reserved1, output1, output2, reserved2);
  if (Recording* const recording = Recording::Get()) {
    const StreamOpenParameters given = parameters ? *parameters : StreamOpenParameters{};
    const std::uint64_t arguments[] = {given.sizeInBytes,
                                       given.reserved,
                                       Address(given.channelArgument),
                                       reserved1,
                                       Address(output1 ? *output1 : nullptr),
                                       Address(output2 ? *output2 : nullptr),
                                       reserved2};
    recording->Add(HeaderOf(Function::kOpen, stream, result, watch), {Arguments(arguments)});
  }
  return result;
}

std::uint8_t __wrap_TarnLiveStream_Start(Tarn::TTarnLiveStream* stream) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnLiveStream_Start(stream);
  if (Recording* const recording = Recording::Get())
    recording->Add(HeaderOf(Function::kStart, stream, result, watch), {});
  return result;
}

std::uint8_t __wrap_TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                          IGenericDataReceivedCallback* callback) {
  Recording* const recording = Recording::Get();
  if (!recording) return __real_TarnLiveStream_SetGenericDataCallback(stream, mode, callback);
  auto& callbacks = recording->GetCallbacks();
  const bool registers = mode == kRegisterDataCallback;
  auto registration = registers                         ? callbacks.Wrap(*recording, stream, callback)
                      : mode == kUnregisterDataCallback ? callbacks.Take(stream, callback)
                                                        : nullptr;
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnLiveStream_SetGenericDataCallback(
      stream, mode, registration ? registration->recorded.Get() : callback);
  // A failure without an error record counts as success, so the platform library may have kept the callback all the
  // same.
  const bool kept = registers && registration && (result || registration->IsKept());
  const std::uint64_t arguments[] = {mode, Address(callback)};
  recording->Add(HeaderOf(Function::kSetGenericDataCallback, stream, result, watch), {Arguments(arguments)});
  if (kept) callbacks.Keep(std::move(registration));
  return result;
}

std::uint8_t __wrap_TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream* stream, const void* request,
                                                       std::uint32_t requestSize, void** reply,
                                                       std::uint32_t* replySize) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnLiveStream_SendSynchDSPCommand(stream, request, requestSize, reply, replySize);
  if (Recording* const recording = Recording::Get()) {
    const void* const answer = reply ? *reply : nullptr;
    const std::uint64_t arguments[] = {Address(answer)};
    recording->Add(HeaderOf(Function::kSendSynchDSPCommand, stream, result, watch),
                   {Arguments(arguments),
                    {PartKind::kRequest, Bytes(request, requestSize)},
                    {PartKind::kReply, Bytes(answer, replySize ? *replySize : 0)}});
  }
  return result;
}

std::uint8_t __wrap_TarnDBI_ReleaseReference(void* reply) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnDBI_ReleaseReference(reply);
  if (Recording* const recording = Recording::Get()) {
    const std::uint64_t arguments[] = {Address(reply)};
    recording->Add(HeaderOf(Function::kReleaseReference, nullptr, result, watch), {Arguments(arguments)});
  }
  return result;
}

void __wrap_TarnLiveStream_Destroy(Tarn::TTarnLiveStream* stream) {
  Recording* const recording = Recording::Get();
  // Taken out before the call, because another thread may get the same handle for a new stream right after it.
  while (recording && recording->GetCallbacks().Take(stream, nullptr)) {
  }
  const Stopwatch watch;
  __real_TarnLiveStream_Destroy(stream);
  if (recording) recording->Add(HeaderOf(Function::kDestroy, stream, 1, watch), {});
}

std::uint8_t __wrap_TarnDBIGetLastError(DBIErrorRecord* record) {
  const Stopwatch watch;
  const std::uint8_t result = __real_TarnDBIGetLastError(record);
  if (Recording* const recording = Recording::Get()) {
    const capture::FrameHeader header = HeaderOf(Function::kGetLastError, nullptr, result, watch);
    try {
      const std::vector<std::byte> error = result && record ? EncodeErrorRecord(*record) : std::vector<std::byte>();
      recording->Add(header, {{PartKind::kError, error}});
    } catch (...) {  // no memory for a copy: the call alone
      recording->Add(header, {});
    }
  }
  return result;
}

}  // extern "C"
