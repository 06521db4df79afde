#include "valuelist/buffer_pool.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "base/static_lock.h"

namespace Kestrel {
namespace {

constinit BufferStatistics statistics;

constinit std::atomic<bool> poolDestroyed{false};

/// Never destroyed, because a thread may still release a buffer at the end of the process. Once its lists are closed,
/// it owns nothing that would have to be freed. It holds a reference on itself.
struct SharedPool {
  SharedPool() { pool.AddRef(); }
  BufferPool pool;
};

/// Otherwise the subtraction in Return could wrap.
static_assert(std::ranges::all_of(kBufferPoolLimits, [](const BufferPoolLimits& list) {
  return list.largestCapacity <= list.sizeLimitInBytes;
}));

}  // namespace

BufferStatistics& GetBufferStatistics() {
  return statistics;
}

void BufferPoolList::Close() {
  std::vector<ReferencePointer<Buffer>> ring;
  {
    const std::lock_guard guard(lock_);
    ring_.swap(ring);
    count_.store(0, std::memory_order_relaxed);
    bytesHeld_.store(0, std::memory_order_relaxed);
  }
  for (const ReferencePointer<Buffer>& buffer : ring)
    if (buffer) buffer->poolable_ = false;
}

ReferencePointer<Buffer> BufferPoolList::GetBuffer() {
  ReferencePointer<Buffer> buffer = TakeFront();
  if (!buffer) buffer = ReferencePointer<Buffer>(new Buffer);
  buffer->useCount_.fetch_add(1, std::memory_order_relaxed);
  return buffer;
}

/// Compares the bytes held without the lock, so buffers that return at the same time may exceed the limit a little.
void BufferPoolList::Return(ReferencePointer<Buffer> buffer) {
  const std::uint64_t capacity = buffer->GetCapacity();
  const bool fits = capacity <= limits_.largestCapacity && GetBytesHeld() <= limits_.sizeLimitInBytes - capacity;
  if (fits && PutBack(buffer)) return;
  buffer->poolable_ = false;
  statistics.refusedReturns.fetch_add(1, std::memory_order_relaxed);
}

/// Null where the list is empty.
ReferencePointer<Buffer> BufferPoolList::TakeFront() {
  if (GetCount() == 0) return nullptr;
  const std::lock_guard guard(lock_);
  const std::size_t count = GetCount();
  if (count == 0) return nullptr;
  ReferencePointer<Buffer> buffer = std::move(ring_[front_]);
  front_ = (front_ + 1) % ring_.size();
  count_.store(count - 1, std::memory_order_relaxed);
  bytesHeld_.store(GetBytesHeld() - buffer->GetCapacity(), std::memory_order_relaxed);
  return buffer;
}

/// False, and the buffer stays with the caller, where the list is full.
bool BufferPoolList::PutBack(ReferencePointer<Buffer>& buffer) {
  buffer->memory_.Rewind();
  const std::lock_guard guard(lock_);
  const std::size_t count = GetCount();
  if (count == ring_.size()) return false;
  bytesHeld_.store(GetBytesHeld() + buffer->GetCapacity(), std::memory_order_relaxed);
  ring_[(front_ + count) % ring_.size()] = std::move(buffer);
  count_.store(count + 1, std::memory_order_relaxed);
  return true;
}

BufferPool* BufferPool::FindSharedPool() {
  return poolDestroyed.load(std::memory_order_acquire) ? nullptr : &NeverDestroyed<SharedPool>().pool;
}

ReferencePointer<BufferPool> BufferPool::GetPool() {
  BufferPool* const shared = FindSharedPool();
  return ReferencePointer<BufferPool>(shared ? shared : new BufferPool);
}

void BufferPool::DestroySharedPool() {
  poolDestroyed.store(true, std::memory_order_release);
  for (BufferPoolList& list : NeverDestroyed<SharedPool>().pool.lists_) list.Close();
}

BufferPoolListIndex BufferPool::ListFor(std::uint64_t bytes) {
  if (bytes < kBufferPoolLimits[MediumBufferList].smallestCapacity) return SmallBufferList;
  return bytes < kBufferPoolLimits[LargeBufferList].smallestCapacity ? MediumBufferList : LargeBufferList;
}

ReferencePointer<Buffer> GetBuffer(BufferPoolListIndex list) {
  BufferPool* const shared = BufferPool::FindSharedPool();
  return shared ? shared->GetBuffer(list) : BufferPool::GetPool()->GetBuffer(list);
}

ReferencePointer<Buffer> CreateBuffer(const void* source, std::uint64_t n) {
  ReferencePointer<Buffer> buffer = GetBuffer(BufferPool::ListFor(n));
  buffer->Append(source, n);
  return buffer;
}

void EnsureBuffer(ReferencePointer<Buffer>& buffer) {
  if (buffer) {
    buffer->Reset();
  } else {
    buffer = GetBuffer(SmallBufferList);
  }
}

std::uint8_t* ReserveAtEnd(ReferencePointer<Buffer>& buffer, std::uint64_t n) {
  EnsureBuffer(buffer);
  return buffer->Reserve(n);
}

}  // namespace Kestrel
