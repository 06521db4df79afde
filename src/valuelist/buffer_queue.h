/// Buffers that wait in the order in which they came, in a ring of a fixed number of places. Nothing is locked and
/// nothing is allocated, so a thread that is stopped in the middle, or dead, holds up nobody: the others find the queue
/// empty, or full, until it goes on.
///
/// Both ends only move forward, and their distance is what waits. A place is filled and emptied in turns: the n-th
/// buffer of the queue fills place n % places in turn n, and in turn n + 1 it may be taken.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"

namespace Kestrel {

/// On cache lines of its own, so that threads that use different queues do not disturb each other.
class alignas(64) BufferQueue : NonCopyable {
 public:
  BufferQueue() = default;
  /// Deletes the buffers that wait.
  ~BufferQueue();

  /// The most places that a queue can have.
  static constexpr std::uint32_t kMostPlaces = 256;

  /// To be called once, before the first use. places: a power of two.
  void Open(std::uint32_t places);

  /// Null where no buffer waits.
  Buffer* TakeFront();
  /// False, and the buffer stays the caller's, where more than so many buffers or bytes would then wait. Requires a
  /// buffer without contents on which nobody has a reference, with a capacity that a list takes.
  bool PutBack(Buffer& buffer, std::uint32_t mostBuffers, std::uint64_t mostBytes);

  std::uint64_t GetBytesHeld() const;
  std::uint32_t GetCount() const;

 private:
  /// What has passed one end since the queue was made: the number of buffers in the low half, and above it the pages of
  /// their capacities. One word, so that both change in one step. Overflows do no harm: distances stay right.
  using Passed = std::uint64_t;

  struct Place {
    std::atomic<std::uint32_t> turn{0};
    std::atomic<std::uint32_t> pages{0};   ///< of the buffer, which must not be touched before it is taken
    std::atomic<Buffer*> buffer{nullptr};  ///< without a reference
  };

  std::uint64_t GetWaiting() const;
  Place& PlaceOf(std::uint32_t turn) { return ring_[turn & (places_ - 1)]; }

  std::atomic<Passed> front_{0};
  std::atomic<Passed> back_{0};
  std::uint32_t places_ = 0;
  /// Inside the queue, because that of the process is never destroyed and must own nothing by then.
  Place ring_[kMostPlaces];
};

}  // namespace Kestrel
