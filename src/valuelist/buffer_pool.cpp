#include "valuelist/buffer_pool.h"

#include "base/static_lock.h"
#include "platform/compiler.h"
#include "platform/threads.h"

namespace Kestrel {
namespace {

constinit BufferStatistics statistics;

constinit std::atomic<bool> poolDestroyed{false};

/// Never destroyed, because a thread may still release a buffer at the end of the process. Once its lists are closed,
/// it owns nothing that would have to be freed. It holds a reference on itself, so that no Release deletes it.
struct SharedPool {
  SharedPool() { pool.AddRef(); }
  BufferPool pool;
};

/// Null after DestroySharedPool. Callers need no reference, because the shared pool is only closed, never destroyed.
BufferPool* FindSharedPool() {
  return poolDestroyed.load(std::memory_order_acquire) ? nullptr : &NeverDestroyed<SharedPool>().pool;
}

}  // namespace

BufferStatistics& GetBufferStatistics() {
  return statistics;
}

void BufferPoolList::Close() {
  closed_.store(true, std::memory_order_relaxed);
  while (const Buffer* const buffer = TakeFront()) delete buffer;
}

std::uint64_t BufferPoolList::GetBytesHeld() const {
  std::uint64_t bytes = 0;
  for (const BufferQueue& queue : queues_) bytes += queue.GetBytesHeld();
  return bytes;
}

std::size_t BufferPoolList::GetCount() const {
  std::size_t count = 0;
  for (const BufferQueue& queue : queues_) count += queue.GetCount();
  return count;
}

ReferencePointer<Buffer> BufferPoolList::GetBuffer() {
  Buffer* buffer = TakeFront();
  if (!buffer) buffer = new Buffer;
  // A plain addition, because nobody else has the buffer yet.
  buffer->useCount_.store(buffer->GetUseCount() + 1, std::memory_order_relaxed);
  return ReferencePointer<Buffer>(buffer);
}

bool BufferPoolList::Keep(Buffer& buffer) {
  buffer.memory_.Rewind();
  const bool fits = buffer.GetCapacity() <= limits_.largestCapacity && !closed_.load(std::memory_order_relaxed);
  if (fits && PutBack(buffer)) return true;
  statistics.refusedReturns.fetch_add(1, std::memory_order_relaxed);
  return false;
}

/// Null where all queues are empty.
Buffer* BufferPoolList::TakeFront() {
  const std::size_t first = platform::ThreadPlace();
  for (std::size_t i = 0; i < kQueues; ++i)
    if (Buffer* const buffer = queues_[(first + i) % kQueues].TakeFront()) return buffer;
  return nullptr;
}

/// False where the list has no room for the buffer.
bool BufferPoolList::PutBack(Buffer& buffer) {
  // First within its eighth, then within what the others leave.
  BufferQueue& own = queues_[platform::ThreadPlace() % kQueues];
  if (own.PutBack(buffer, limits_.mostBuffers / kQueues, limits_.sizeLimitInBytes / kQueues)) return true;
  std::uint32_t others = 0;
  std::uint64_t othersBytes = 0;
  for (const BufferQueue& queue : queues_) {
    if (&queue == &own) continue;
    others += queue.GetCount();
    othersBytes += queue.GetBytesHeld();
  }
  return others < limits_.mostBuffers && othersBytes < limits_.sizeLimitInBytes &&
         own.PutBack(buffer, limits_.mostBuffers - others, limits_.sizeLimitInBytes - othersBytes);
}

ReferencePointer<BufferPool> BufferPool::GetPool() {
  BufferPool* const shared = FindSharedPool();
  return ReferencePointer<BufferPool>(shared ? shared : new BufferPool);
}

/// Flattened like CreateBuffer, because the calls of so many small functions take as long as their work.
TARN_FLATTEN bool BufferPool::Keep(Buffer& buffer) {
  BufferPool* const shared = FindSharedPool();
  return shared && shared->lists_[ListFor(buffer.GetCapacity())].Keep(buffer);
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
  BufferPool* const shared = FindSharedPool();
  return shared ? shared->GetBuffer(list) : BufferPool::GetPool()->GetBuffer(list);
}

TARN_FLATTEN ReferencePointer<Buffer> CreateBuffer(const void* source, std::uint64_t n) {
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
