#include "fakes/counting_allocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit std::atomic<std::int64_t> bytesHeld{0}, peakBytes{0}, blocksHeld{0}, allocations{0};
/// Allocations left until one fails; 0 where none shall.
constinit std::atomic<std::int64_t> untilFailure{0};
constinit std::atomic<bool> hasFailed{false};

/// Stands before each block; as large as the alignment that every block has.
struct alignas(std::max_align_t) Head {
  void* allocation;
  std::size_t size;
};

void* Allocate(std::size_t size, std::size_t alignment) noexcept {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (untilFailure.load(std::memory_order_relaxed) > 0 && untilFailure.fetch_sub(1) == 1) {
    hasFailed = true;
    return nullptr;
  }
  const std::size_t slack = alignment > alignof(Head) ? alignment : 0;
  if (size > SIZE_MAX / 2) return nullptr;
  void* const allocation = std::malloc(sizeof(Head) + slack + size);
  if (!allocation) return nullptr;
  auto address = reinterpret_cast<std::uintptr_t>(allocation) + sizeof(Head);
  if (slack) address = (address + alignment - 1) / alignment * alignment;
  auto* const head = reinterpret_cast<Head*>(address) - 1;
  *head = {allocation, size};
  blocksHeld.fetch_add(1, std::memory_order_relaxed);
  const auto held = bytesHeld.fetch_add(static_cast<std::int64_t>(size)) + static_cast<std::int64_t>(size);
  for (auto peak = peakBytes.load(); held > peak && !peakBytes.compare_exchange_weak(peak, held);) {
  }
  return reinterpret_cast<void*>(address);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
  if (void* const block = Allocate(size, alignment)) return block;
  throw std::bad_alloc();
}

void Free(void* block) noexcept {
  if (!block) return;
  const Head head = reinterpret_cast<Head*>(block)[-1];
  blocksHeld.fetch_sub(1, std::memory_order_relaxed);
  bytesHeld.fetch_sub(static_cast<std::int64_t>(head.size), std::memory_order_relaxed);
  std::free(head.allocation);
}

constexpr std::size_t kDefault = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t size) {
  return AllocateOrThrow(size, kDefault);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size, kDefault);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size, kDefault);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size, kDefault);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
  Free(block);
}
void operator delete[](void* block) noexcept {
  Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  Free(block);
}

namespace fakes {

HeapUse GetHeapUse() {
  return {bytesHeld.load(), peakBytes.load(), blocksHeld.load()};
}

void ResetHeapPeak() {
  peakBytes = bytesHeld.load();
}

FailingAllocation::FailingAllocation(std::int64_t n) {
  hasFailed = false;
  untilFailure = n;
}

FailingAllocation::~FailingAllocation() {
  untilFailure = 0;
}

bool FailingAllocation::HasFailed() const {
  return hasFailed;
}

std::int64_t CountAllocations() {
  return allocations.load();
}

}  // namespace fakes
