#include "valuelist/buffer.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "base/exceptions.h"
#include "valuelist/buffer_pool.h"

namespace Kestrel {
namespace {

constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMaxAllocation = std::numeric_limits<std::ptrdiff_t>::max();
static_assert(FlatMemory::kAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

/// kUnlimited where the capacity does not fit into 64 bits; no allocation of that size succeeds.
std::uint64_t CapacityFor(std::uint64_t length, std::uint64_t added) {
  if (added > kUnlimited - length) return kUnlimited;
  const std::uint64_t needed = length + added;
  if (needed > kUnlimited / 3) return kUnlimited;
  const std::uint64_t pages = (needed * 3 / 2 + FlatMemory::kPageSize - 1) / FlatMemory::kPageSize;
  return pages * FlatMemory::kPageSize;
}

/// Storage begins with a cache line, because copying a kilobyte takes up to half as long again where each store goes to
/// two lines.
constexpr std::align_val_t kStorageAlignment{64};

/// Null where there is not enough memory.
std::uint8_t* AllocateStorage(std::uint64_t capacity) {
  if (capacity > kMaxAllocation) return nullptr;
  return static_cast<std::uint8_t*>(
      ::operator new(static_cast<std::size_t>(capacity), kStorageAlignment, std::nothrow));
}

void CountBytes(std::uint64_t capacity) {
  GetBufferStatistics().bytesAllocated.fetch_add(static_cast<std::int64_t>(capacity), std::memory_order_relaxed);
}

}  // namespace

FlatMemory::FlatMemory(std::uint8_t* storage, std::uint64_t n)
    : length_(n), storage_(storage), capacity_(n), ownsStorage_(false) {}

FlatMemory::~FlatMemory() {
  UnpoisonBytes(storage_, capacity_);
  if (!ownsStorage_) return;
  CountBytes(capacity_);
  ::operator delete(storage_, kStorageAlignment);
}

void FlatMemory::ThrowNotEnoughBytes() {
  throw BufferException(kNotEnoughBytes);
}

void FlatMemory::Truncate(std::uint64_t length) {
  PoisonBytes(storage_ + length, length_ - length);
  length_ = length;
}

void FlatMemory::Rewind() {
  readPosition_ = 0;
  Truncate(0);
}

void FlatMemory::Grow(std::uint64_t added) {
  Reallocate(CapacityFor(length_, added));
}

void FlatMemory::Reallocate(std::uint64_t capacity) {
  std::uint8_t* const storage = AllocateStorage(capacity);
  if (!storage) {
    FreeStorage();
    ThrowOutOfMemory(capacity);
  }
  if (length_ > 0) std::memcpy(storage, storage_, static_cast<std::size_t>(length_));
  PoisonBytes(storage + length_, capacity - length_);
  CountBytes(ownsStorage_ ? capacity - capacity_ : capacity);
  SetStorage(storage, capacity);
}

void FlatMemory::FreeStorage() {
  SetStorage(nullptr, 0);
  readPosition_ = length_ = 0;
}

void FlatMemory::SetStorage(std::uint8_t* storage, std::uint64_t capacity) {
  UnpoisonBytes(storage_, capacity_);
  if (ownsStorage_) ::operator delete(storage_, kStorageAlignment);
  storage_ = storage;
  capacity_ = capacity;
  ownsStorage_ = true;
}

Buffer::Buffer() {
  GetBufferStatistics().liveBlocks.fetch_add(1, std::memory_order_relaxed);
}

Buffer::~Buffer() {
  if (poolable_) GetBufferStatistics().liveBlocks.fetch_sub(1, std::memory_order_relaxed);
}

ReferencePointer<Buffer> Buffer::CreateExact(std::uint64_t n) {
  constexpr std::uint64_t kObject = (sizeof(Buffer) + FlatMemory::kAlignment - 1) & ~(FlatMemory::kAlignment - 1);
  void* const block =
      n > kMaxAllocation - kObject ? nullptr : ::operator new(static_cast<std::size_t>(kObject + n), std::nothrow);
  if (!block) ThrowOutOfMemory(n);
  return ReferencePointer<Buffer>(::new (block) Buffer(static_cast<std::uint8_t*>(block) + kObject, n));
}

void Buffer::Append(const void* source, std::uint64_t n) {
  if (n == 0) return;
  std::memcpy(memory_.Extend(n), source, static_cast<std::size_t>(n));
}

void Buffer::Reset() {
  memory_.Rewind();
  useCount_.store(0, std::memory_order_relaxed);
}

void Buffer::DeleteThis() {
  if (!poolable_) {  // made by CreateExact
    void* const block = this;
    std::destroy_at(this);
    ::operator delete(block);
  } else if (!BufferPool::Keep(*this)) {
    delete this;
  }
}

}  // namespace Kestrel
