/// Kestrel::BufferPool: released buffers wait here, with their storage, for the next user.
///
/// Three first-in first-out lists by capacity, each bounded by count and by bytes. The process-wide pool is made on
/// first use and closed by DestroySharedPool at unload; after that each GetPool makes a private pool, which goes with
/// its last reference.
///
/// Threads  Everything may be called on any thread. Each list has its own lock; nothing is called with it held.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/critical_section.h"
#include "base/reference_counting.h"
#include "valuelist/buffer.h"

namespace Kestrel {

enum BufferPoolListIndex : std::size_t { SmallBufferList, MediumBufferList, LargeBufferList };

/// One size class.
struct BufferPoolLimits {
  std::uint64_t smallestCapacity;  ///< routed here from this capacity on
  std::uint64_t largestCapacity;   ///< a buffer above it is not kept
  std::uint64_t sizeLimitInBytes;  ///< all capacities together
  std::size_t mostBuffers;
};
/// Row = BufferPoolListIndex. The first row accepts more than is ever routed to it.
inline constexpr BufferPoolLimits kBufferPoolLimits[] = {
    {0, 0x80000, 0x200000, 256},
    {0x10000, 0x80000, 0x600000, 16},
    {0x80000, 0x300000, 0x1000000, 4},
};

/// Counters of all blocks of the process; read by tests and memory dumps only.
struct BufferStatistics {
  std::atomic<std::int64_t> bytesAllocated{0};  ///< grows by each capacity gained and by each capacity given up
  std::atomic<std::int64_t> liveBlocks{0};
  std::atomic<std::uint64_t> refusedReturns{0};
};
BufferStatistics& GetBufferStatistics();

class BufferPoolList : NonCopyable {
 public:
  explicit BufferPoolList(const BufferPoolLimits& limits) : limits_(limits), ring_(limits.mostBuffers) {}
  ~BufferPoolList() { Close(); }

  /// The buffer at the front, or a new one.
  ReferencePointer<Buffer> GetBuffer();
  /// Takes the last reference on a buffer: keeps it, or deletes the buffer where the list has no room for it.
  void Return(ReferencePointer<Buffer> buffer);
  /// Deletes the buffers that are held, and keeps none from then on.
  void Close();

  std::uint64_t GetBytesHeld() const { return bytesHeld_.load(std::memory_order_relaxed); }
  std::size_t GetCount() const { return count_.load(std::memory_order_relaxed); }

 private:
  ReferencePointer<Buffer> TakeFront();
  bool PutBack(ReferencePointer<Buffer>& buffer);

  const BufferPoolLimits& limits_;
  CriticalSection lock_;
  /// The queue: count_ buffers from front_ on, around the end. Its size is fixed, so that recycling never allocates.
  std::vector<ReferencePointer<Buffer>> ring_;
  std::size_t front_ = 0;
  /// Both change under the lock only, and are read without it.
  std::atomic<std::size_t> count_{0};
  std::atomic<std::uint64_t> bytesHeld_{0};
};

class BufferPool final : public ReferenceCounted {
 public:
  BufferPool() = default;

  static ReferencePointer<BufferPool> GetPool();
  /// Null after DestroySharedPool. Needs no reference, because the shared pool is only closed, never destroyed.
  static BufferPool* FindSharedPool();
  /// For the module's unload: frees what the shared pool holds. Safe beside other threads.
  static void DestroySharedPool();

  ReferencePointer<Buffer> GetBuffer(BufferPoolListIndex list) { return lists_[list].GetBuffer(); }
  BufferPoolList& GetList(BufferPoolListIndex list) { return lists_[list]; }
  /// The list for a size or a capacity in bytes.
  static BufferPoolListIndex ListFor(std::uint64_t bytes);

 private:
  BufferPoolList lists_[3] = {BufferPoolList(kBufferPoolLimits[0]), BufferPoolList(kBufferPoolLimits[1]),
                              BufferPoolList(kBufferPoolLimits[2])};
};

/// The operations that most callers need, on the shared pool.
ReferencePointer<Buffer> GetBuffer(BufferPoolListIndex list);
/// A buffer with a copy of n bytes, from the list for n.
ReferencePointer<Buffer> CreateBuffer(const void* source, std::uint64_t n);
/// Empties the buffer, or takes one from the small list where there is none.
void EnsureBuffer(ReferencePointer<Buffer>& buffer);
/// EnsureBuffer, then Reserve.
std::uint8_t* ReserveAtEnd(ReferencePointer<Buffer>& buffer, std::uint64_t n);

}  // namespace Kestrel
