#include "recorder/recorded_callback.h"

#include <memory>
#include <mutex>
#include <utility>

#include "recorder/recording.h"

namespace recorder {

using capture::FrameEvent;
using Kestrel::ComPtr;

RecordedCallback::RecordedCallback(Recording& recording, Tarn::TTarnLiveStream* stream,
                                   IGenericDataReceivedCallback* callback)
    : recording_(recording), stream_(stream), callback_(callback) {}

capture::FrameHeader RecordedCallback::HeaderOf(FrameEvent event) const {
  capture::FrameHeader header;
  header.event = event;
  header.direction = capture::FrameDirection::kToFinder;
  header.stream = reinterpret_cast<std::uintptr_t>(stream_);
  return header;
}

void RecordedCallback::OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                                     std::uint64_t size) {
  // The last reference may go before the block is delivered, as it may for the finder's own object.
  const ComPtr<IGenericDataReceivedCallback> self(this);
  capture::FrameHeader header = HeaderOf(FrameEvent::kBlock);
  header.messageType = messageType;
  const std::uint64_t arguments[] = {static_cast<std::uint32_t>(blockKind)};
  recording_.Add(header, {{capture::PartKind::kArguments, std::as_bytes(std::span(arguments))},
                          {capture::PartKind::kBlock, std::as_bytes(std::span(data, data ? size : 0))}});
  header.event = FrameEvent::kDelivered;
  const Stopwatch watch;
  try {
    callback_->OnGenericData(blockKind, messageType, data, size);
  } catch (...) {  // the platform library's business, as without a recorder
    header.result = 0;
    header.duration = watch.GetNanoseconds();
    recording_.Add(header, {});
    throw;
  }
  header.duration = watch.GetNanoseconds();
  recording_.Add(header, {});
}

void RecordedCallback::OnDetach() {
  const ComPtr<IGenericDataReceivedCallback> self(this);
  const Stopwatch watch;
  callback_->OnDetach();
  capture::FrameHeader header = HeaderOf(FrameEvent::kDetach);
  header.duration = watch.GetNanoseconds();
  recording_.Add(header, {});
}

std::unique_ptr<Registration> RecordedCallbacks::Wrap(Recording& recording, Tarn::TTarnLiveStream* stream,
                                                      IGenericDataReceivedCallback* callback) noexcept {
  if (!callback) return nullptr;
  try {
    return std::make_unique<Registration>(Registration{
        stream, callback,
        Kestrel::MakeComObject<RecordedCallback, IGenericDataReceivedCallback>(recording, stream, callback), nullptr});
  } catch (...) {  // no memory: the finder's own callback is registered, and its blocks are not recorded
    return nullptr;
  }
}

void RecordedCallbacks::Keep(std::unique_ptr<Registration> registration) noexcept {
  const std::lock_guard guard(lock_);
  registration->older = std::move(newest_);
  newest_ = std::move(registration);
}

std::unique_ptr<Registration> RecordedCallbacks::Take(Tarn::TTarnLiveStream* stream,
                                                      IGenericDataReceivedCallback* callback) noexcept {
  const std::lock_guard guard(lock_);
  for (std::unique_ptr<Registration>* link = &newest_; *link; link = &(*link)->older) {
    if ((*link)->stream != stream || (callback && (*link)->callback != callback)) continue;
    std::unique_ptr<Registration> found = std::move(*link);
    *link = std::move(found->older);
    return found;
  }
  return nullptr;
}

}  // namespace recorder
