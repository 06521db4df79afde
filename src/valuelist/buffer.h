/// Kestrel::Buffer: a reference-counted, growable byte buffer with a write and a read position, recycled by the pool.
///
/// Threads  One thread at a time writes or reads a buffer; another thread gets it by a ReferencePointer.
/// Errors   BufferException; a failed operation leaves positions and contents as they were. OutOfMemoryException where
///          the storage cannot grow: the buffer has lost its contents and must not be used further.
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

/// One allocation, aligned to 16 bytes, with its positions. read position <= length <= capacity; the write position is
/// the length. The capacity is 0 or a multiple of kPageSize, unless an exact one was asked for.
class FlatMemory : NonCopyable {
 public:
  static constexpr std::size_t kAlignment = 16;
  static constexpr std::uint64_t kPageSize = 4096;

  FlatMemory();
  /// n uninitialised bytes; the capacity is their number.
  explicit FlatMemory(std::uint64_t n);
  ~FlatMemory();

  std::uint8_t* GetData() const { return storage_; }
  std::uint64_t GetLength() const { return length_; }
  std::uint64_t GetReadPosition() const { return readPosition_; }
  std::uint64_t GetCapacity() const { return capacity_; }

  /// Adds n uninitialised bytes at the end and returns their address.
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
  /// Forgets the bytes from a length on. Requires read position <= length <= the length so far.
  void Truncate(std::uint64_t length);
  /// Positions and length to 0; the storage stays.
  void Rewind();

 private:
  [[noreturn]] static void ThrowNotEnoughBytes();
  void Grow(std::uint64_t added);
  void Reallocate(std::uint64_t capacity);
  void FreeStorage();

  std::uint64_t readPosition_ = 0;
  std::uint64_t length_ = 0;
  std::uint8_t* storage_ = nullptr;
  std::uint64_t capacity_ = 0;
};

class Buffer final : public ReferenceCounted {
 public:
  Buffer() = default;
  /// A buffer outside the pool with n uninitialised bytes and no room for more, so that many small ones cost little: a
  /// pooled buffer takes a page even for one byte.
  static ReferencePointer<Buffer> CreateExact(std::uint64_t n);

  /// Copies n bytes to the end.
  void Append(const void* source, std::uint64_t n);
  /// Adds n uninitialised bytes at the end and returns their address, valid until the buffer grows.
  std::uint8_t* Reserve(std::uint64_t n) { return memory_.Extend(n); }
  /// Forgets the bytes from a length on. Requires read position <= length <= the length so far.
  void Truncate(std::uint64_t length) { memory_.Truncate(length); }
  /// Takes n bytes at the read position, or throws kNotEnoughBytes.
  const std::uint8_t* Take(std::uint64_t n) { return memory_.Consume(n); }
  /// Take of a little-endian number.
  std::uint8_t ReadUInt8() { return *Take(1); }
  std::uint32_t ReadUInt32() { return LoadLittleEndian<std::uint32_t>(Take(sizeof(std::uint32_t))); }
  std::uint64_t ReadUInt64() { return LoadLittleEndian<std::uint64_t>(Take(sizeof(std::uint64_t))); }
  /// Empties the buffer and forgets its use count; storage and capacity stay.
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

  /// Returns the buffer to the pool, or deletes it where the pool does not keep it.
  void DeleteThis() override;

 private:
  friend class BufferPool;
  friend class BufferPoolList;

  explicit Buffer(std::uint64_t n) : memory_(n), poolable_(false) {}

  FlatMemory memory_;
  std::atomic<std::uint32_t> useCount_{0};
  bool poolable_ = true;
};

}  // namespace Kestrel
