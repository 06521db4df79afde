/// Kestrel::Buffer: a reference-counted, growable byte buffer with a write and a read position, recycled by the pool.
///
/// Bytes are appended at the end and taken from the read position on. When storage has to grow, it grows to one and a
/// half times what is needed, in whole pages, so that many small appends copy each byte only a few times.
///
/// Ownership  Held by ReferencePointer. The last Release returns the buffer with its storage to the pool
///            (buffer_pool.h), or deletes it. Addresses into the storage are valid until the buffer grows or goes.
/// Threads    One thread at a time uses a buffer; to hand it to another thread, pass a ReferencePointer.
/// Errors     BufferException: positions and contents stay as they were. OutOfMemoryException where the storage cannot
///            grow: the buffer has lost its contents and must not be used further.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/byte_order.h"
#include "base/reference_counting.h"
#include "valuelist/poison.h"

namespace Kestrel {

/// The texts of BufferException.
inline constexpr char kNotEnoughBytes[] = "read failed - not enough bytes in buffer";
inline constexpr char kInvalidPointerRequest[] = "invalid pointer request";

/// The storage of a buffer: one allocation and the positions in it, read position <= length <= capacity. Bytes are
/// written at the length. The capacity is 0 or a multiple of kPageSize, unless an exact one was asked for.
class FlatMemory : NonCopyable {
 public:
  static constexpr std::size_t kAlignment = 16;
  static constexpr std::uint64_t kPageSize = 4096;

  FlatMemory() = default;
  /// n uninitialised bytes that stand elsewhere and outlive the object; length and capacity are n.
  FlatMemory(std::uint8_t* storage, std::uint64_t n);
  ~FlatMemory();

  std::uint8_t* GetData() const { return storage_; }
  std::uint64_t GetLength() const { return length_; }
  std::uint64_t GetReadPosition() const { return readPosition_; }
  std::uint64_t GetCapacity() const { return capacity_; }

  /// Appends n uninitialised bytes and returns their address.
  std::uint8_t* Extend(std::uint64_t n) {
    if (n > capacity_ - length_) Grow(n);
    std::uint8_t* const added = storage_ + length_;
    UnpoisonBytes(added, n);
    length_ += n;
    return added;
  }
  /// Moves the read position over n bytes and returns their address.
  const std::uint8_t* Consume(std::uint64_t n) {
    if (n > length_ - readPosition_) ThrowNotEnoughBytes();
    const std::uint8_t* const taken = storage_ + readPosition_;
    readPosition_ += n;
    return taken;
  }
  /// Shortens the contents. Requires read position <= length <= current length.
  void Truncate(std::uint64_t length);
  /// Empties the contents; the storage stays.
  void Rewind();

 private:
  [[noreturn]] static void ThrowNotEnoughBytes();
  void Grow(std::uint64_t added);
  void Reallocate(std::uint64_t capacity);
  void FreeStorage();
  /// Frees the old storage where the object owns it. The object owns the new storage.
  void SetStorage(std::uint8_t* storage, std::uint64_t capacity);

  std::uint64_t readPosition_ = 0;
  std::uint64_t length_ = 0;
  std::uint8_t* storage_ = nullptr;
  std::uint64_t capacity_ = 0;
  bool ownsStorage_ = true;
};

class Buffer final : public ReferenceCounted {
 public:
  Buffer();
  ~Buffer() override;
  /// A buffer of n uninitialised bytes that has exactly their capacity and never goes to the pool. For values of a
  /// message, because there can be a great many of few bytes and a pooled buffer takes a page even for one. Object and
  /// bytes are one allocation. BufferStatistics leaves it out, because counting the two of a record would take a sixth
  /// of the time of building its value list.
  static ReferencePointer<Buffer> CreateExact(std::uint64_t n);

  /// Requires a source outside this buffer.
  void Append(const void* source, std::uint64_t n);
  /// Appends n uninitialised bytes and returns their address.
  std::uint8_t* Reserve(std::uint64_t n) { return memory_.Extend(n); }
  /// Shortens the contents. Requires read position <= length <= current length.
  void Truncate(std::uint64_t length) { memory_.Truncate(length); }
  /// Moves the read position over n bytes and returns their address; throws kNotEnoughBytes where fewer are unread.
  const std::uint8_t* Take(std::uint64_t n) { return memory_.Consume(n); }
  /// Little-endian, from the read position; errors as Take.
  std::uint8_t ReadUInt8() { return *Take(1); }
  std::uint32_t ReadUInt32() { return LoadLittleEndian<std::uint32_t>(Take(sizeof(std::uint32_t))); }
  std::uint64_t ReadUInt64() { return LoadLittleEndian<std::uint64_t>(Take(sizeof(std::uint64_t))); }
  /// Empties the buffer and sets its use count to 0; storage and capacity stay.
  void Reset();

  std::uint8_t* GetData() const { return memory_.GetData(); }
  std::uint64_t GetLength() const { return memory_.GetLength(); }
  std::uint64_t GetReadPosition() const { return memory_.GetReadPosition(); }
  std::uint64_t GetCapacity() const { return memory_.GetCapacity(); }
  std::uint64_t GetUnreadLength() const { return GetLength() - GetReadPosition(); }
  std::span<const std::uint8_t> GetBytes() const { return {GetData(), static_cast<std::size_t>(GetLength())}; }
  /// Whether the last Release tries to return the buffer to the pool.
  bool IsPoolable() const { return poolable_; }
  /// How often the pool has handed the buffer out since it was made or reset.
  std::uint32_t GetUseCount() const { return useCount_.load(std::memory_order_relaxed); }

  /// The last Release calls it: returns the buffer to the pool, or deletes it where the pool does not keep it.
  void DeleteThis() override;

 private:
  friend class BufferPoolList;

  Buffer(std::uint8_t* storage, std::uint64_t n) : memory_(storage, n), poolable_(false) {}

  FlatMemory memory_;
  std::atomic<std::uint32_t> useCount_{0};
  const bool poolable_ = true;
};

}  // namespace Kestrel
