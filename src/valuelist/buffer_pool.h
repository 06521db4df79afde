/// Kestrel::BufferPool: released buffers wait here, with their storage, for the next user, so that the steady state
/// allocates nothing.
///
/// Three first-in first-out lists by capacity, because one list would hand a buffer of a megabyte to a command of a
/// hundred bytes, and grow the next small one for a block. Each list is bounded by count and by bytes, so that a peak
/// of traffic is not kept for the life of the process.
///
///     small    below 64 KiB        commands and blocks without a picture: many, most of them below one page
///     medium   64 to 512 KiB       pictures, and lists on their way into text, whose size is not known before
///     large    512 KiB to 3 MiB    large pictures and long replies, few at a time; a larger buffer is never kept
///
/// The shared pool is made on first use and closed by DestroySharedPool at unload; after that each GetPool makes a
/// private pool, which goes with its last reference.
///
/// Threads  Everything may be called on any thread. A list is several queues (buffer_queue.h), because threads that
///          return and take at the same moment would disturb each other in one. A thread returns to the queue of its
///          place (platform::ThreadPlace), and takes from it first, then from the others. So it gets its buffers back
///          in their order.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"
#include "valuelist/buffer_queue.h"

namespace Kestrel {

enum BufferPoolListIndex : std::size_t { SmallBufferList, MediumBufferList, LargeBufferList };

/// One size class.
struct BufferPoolLimits {
  std::uint64_t smallestCapacity;  ///< routed here from this capacity on
  std::uint64_t largestCapacity;   ///< a buffer above it is not kept
  std::uint64_t sizeLimitInBytes;  ///< all capacities together
  std::uint32_t mostBuffers;
};
/// Row = BufferPoolListIndex. Nothing configures them. The first row accepts larger capacities than are routed to it.
inline constexpr BufferPoolLimits kBufferPoolLimits[] = {
    {0, 0x80000, 0x200000, 256},
    {0x10000, 0x80000, 0x600000, 16},
    {0x80000, 0x300000, 0x1000000, 4},
};
static_assert(kBufferPoolLimits[SmallBufferList].mostBuffers == BufferQueue::kMostPlaces);

/// Counters of the buffers of the process, but for exact ones. Nothing in the library reads them: they are for memory
/// dumps and tests.
struct BufferStatistics {
  std::atomic<std::int64_t> bytesAllocated{0};  ///< grows by each capacity that is gained and by each that is freed
  std::atomic<std::int64_t> liveBlocks{0};
  std::atomic<std::uint64_t> refusedReturns{0};
};
BufferStatistics& GetBufferStatistics();

/// The buffers of one size class. The limits hold for all its queues together, but a queue keeps an eighth of them
/// without a look at the others, because threads should not read what others write all the time. So a single thread has
/// the limits exactly. Several may keep up to twice as much, and those that return at the same moment a buffer each
/// beyond that.
class BufferPoolList : NonCopyable {
 public:
  explicit BufferPoolList(const BufferPoolLimits& limits) : limits_(limits) {
    for (BufferQueue& queue : queues_) queue.Open(limits.mostBuffers);
  }

  /// The buffer that has waited longest in the thread's queue, or else in another one, empty and with its old capacity;
  /// a new one where all are empty.
  ReferencePointer<Buffer> GetBuffer();
  /// Empties the buffer and keeps it. False where the list has no room; the buffer then stays the caller's. Requires a
  /// buffer on which nobody has a reference.
  bool Keep(Buffer& buffer);
  /// Deletes the buffers that are held, and keeps none from then on. One that a thread returns at the same moment may
  /// stay.
  void Close();

  std::uint64_t GetBytesHeld() const;
  std::size_t GetCount() const;

 private:
  static constexpr std::size_t kQueues = 8;

  Buffer* TakeFront();
  bool PutBack(Buffer& buffer);

  const BufferPoolLimits& limits_;
  std::atomic<bool> closed_{false};
  BufferQueue queues_[kQueues];
};

class BufferPool final : public ReferenceCounted {
 public:
  BufferPool() = default;

  static ReferencePointer<BufferPool> GetPool();
  /// Gives the buffer to the list of the shared pool for its capacity; as BufferPoolList::Keep. False once that pool is
  /// closed: a private one would free the buffer at once.
  static bool Keep(Buffer& buffer);
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

/// A buffer of the shared pool, or a new one once that is closed. Callers choose the list by the size that they expect.
ReferencePointer<Buffer> GetBuffer(BufferPoolListIndex list);
/// A copy of n bytes, in a buffer from the list for n.
ReferencePointer<Buffer> CreateBuffer(const void* source, std::uint64_t n);
/// Empties the buffer, or takes one from the small list where there is none. This and ReserveAtEnd complete the
/// interface of the pool; the library calls neither.
void EnsureBuffer(ReferencePointer<Buffer>& buffer);
/// EnsureBuffer, then Reserve.
std::uint8_t* ReserveAtEnd(ReferencePointer<Buffer>& buffer, std::uint64_t n);

}  // namespace Kestrel
