#include "valuelist/buffer_pool.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Kestrel {
namespace {

constinit BufferStatistics statistics;

/// The shared pool, which holds one reference on itself from here, and whether the module has let go of it.
constinit std::atomic<BufferPool*> sharedPool{nullptr};
constinit std::atomic<bool> poolDestroyed{false};

static_assert(std::ranges::all_of(kBufferPoolLimits, [](const BufferPoolLimits& list) {
  return list.largestCapacity <= list.sizeLimitInBytes;
}));

}  // namespace

BufferStatistics& GetBufferStatistics() {
  return statistics;
}

BufferPoolList::~BufferPoolList() {
  while (const ReferencePointer<Buffer> buffer = TakeFront()) buffer->poolable_ = false;
}

ReferencePointer<Buffer> BufferPoolList::GetBuffer() {
  ReferencePointer<Buffer> buffer = TakeFront();
  if (!buffer) buffer = ReferencePointer<Buffer>(new Buffer);
  buffer->useCount_.fetch_add(1, std::memory_order_relaxed);
  return buffer;
}

/// The bytes held are compared without the lock: returns at the same time may go beyond the limit by a few buffers.
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

/// Two threads that come first at once may both make a pool; one of them is kept. Without a lock there is none whose
/// own end could come before the last buffer is let go.
ReferencePointer<BufferPool> BufferPool::GetPool() {
  if (BufferPool* const pool = sharedPool.load(std::memory_order_acquire)) return ReferencePointer<BufferPool>(pool);
  ReferencePointer<BufferPool> created(new BufferPool);
  if (poolDestroyed.load(std::memory_order_acquire)) return created;
  BufferPool* kept = nullptr;
  created->AddRef();
  if (sharedPool.compare_exchange_strong(kept, created.Get(), std::memory_order_acq_rel)) return created;
  created->Release();
  return ReferencePointer<BufferPool>(kept);
}

void BufferPool::DestroySharedPool() {
  poolDestroyed.store(true, std::memory_order_release);
  if (BufferPool* const pool = sharedPool.exchange(nullptr, std::memory_order_acq_rel)) pool->Release();
}

BufferPoolListIndex BufferPool::ListFor(std::uint64_t bytes) {
  if (bytes < kBufferPoolLimits[MediumBufferList].smallestCapacity) return SmallBufferList;
  return bytes < kBufferPoolLimits[LargeBufferList].smallestCapacity ? MediumBufferList : LargeBufferList;
}

ReferencePointer<Buffer> GetBuffer(BufferPoolListIndex list) {
  return BufferPool::GetPool()->GetBuffer(list);
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
