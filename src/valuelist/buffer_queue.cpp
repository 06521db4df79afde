#include "valuelist/buffer_queue.h"

#include <algorithm>
#include <utility>

namespace Kestrel {
namespace {

constexpr std::uint32_t Buffers(std::uint64_t passed) {
  return static_cast<std::uint32_t>(passed);
}
constexpr std::uint64_t Bytes(std::uint64_t passed) {
  return (passed >> 32) * FlatMemory::kPageSize;
}
constexpr std::uint64_t Step(std::uint32_t pages) {
  return std::uint64_t{pages} << 32 | 1;
}

/// What waits. The ends are not read at the same moment, so the front can be ahead.
std::uint64_t Between(std::uint64_t front, std::uint64_t back) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(static_cast<std::int64_t>(back - front), 0));
}

}  // namespace

void BufferQueue::Open(std::uint32_t places) {
  places_ = places;
  for (std::uint32_t turn = 0; turn < places; ++turn) ring_[turn].turn.store(turn, std::memory_order_relaxed);
}

BufferQueue::~BufferQueue() {
  while (const Buffer* const buffer = TakeFront()) delete buffer;
}

std::uint64_t BufferQueue::GetWaiting() const {
  return Between(front_.load(std::memory_order_relaxed), back_.load(std::memory_order_relaxed));
}
std::uint32_t BufferQueue::GetCount() const {
  return Buffers(GetWaiting());
}
std::uint64_t BufferQueue::GetBytesHeld() const {
  return Bytes(GetWaiting());
}

Buffer* BufferQueue::TakeFront() {
  for (Passed front = front_.load(std::memory_order_relaxed);;) {
    const std::uint32_t turn = Buffers(front);
    Place& place = PlaceOf(turn);
    if (place.turn.load(std::memory_order_acquire) != turn + 1) {
      const Passed before = std::exchange(front, front_.load(std::memory_order_relaxed));
      if (front == before) return nullptr;
      continue;  // another thread was faster
    }
    Buffer* const buffer = place.buffer.load(std::memory_order_relaxed);
    const Passed next = front + Step(place.pages.load(std::memory_order_relaxed));
    if (!front_.compare_exchange_weak(front, next, std::memory_order_relaxed)) continue;
    place.turn.store(turn + places_, std::memory_order_release);
    return buffer;
  }
}

bool BufferQueue::PutBack(Buffer& buffer, std::uint32_t mostBuffers, std::uint64_t mostBytes) {
  const auto pages = static_cast<std::uint32_t>(buffer.GetCapacity() / FlatMemory::kPageSize);
  for (Passed back = back_.load(std::memory_order_relaxed);;) {
    const std::uint64_t with = Between(front_.load(std::memory_order_relaxed), back) + Step(pages);
    if (Buffers(with) > mostBuffers || Bytes(with) > mostBytes) return false;
    const std::uint32_t turn = Buffers(back);
    Place& place = PlaceOf(turn);
    if (place.turn.load(std::memory_order_acquire) != turn) {
      const Passed before = std::exchange(back, back_.load(std::memory_order_relaxed));
      if (back == before) return false;
      continue;  // another thread was faster
    }
    if (!back_.compare_exchange_weak(back, back + Step(pages), std::memory_order_relaxed)) continue;
    place.buffer.store(&buffer, std::memory_order_relaxed);
    place.pages.store(pages, std::memory_order_relaxed);
    place.turn.store(turn + 1, std::memory_order_release);
    return true;
  }
}

}  // namespace Kestrel
