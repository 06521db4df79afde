#include "fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "valuelist/buffer_pool.h"

namespace fuzz {
namespace {

constexpr Kestrel::BufferPoolListIndex kLists[] = {Kestrel::SmallBufferList, Kestrel::MediumBufferList,
                                                   Kestrel::LargeBufferList};

}  // namespace

void Check(bool holds, const char* property) {
  if (holds) return;
  // No allocation may fail from here on, because writing the input to a file needs memory.
  const fakes::FailingAllocation none(0);
  std::fprintf(stderr, "property does not hold: %s\n", property);
  std::abort();
}

std::uint8_t Choices::Byte() {
  if (rest_.empty()) return 0;
  const std::uint8_t byte = rest_.front();
  rest_ = rest_.subspan(1);
  return byte;
}

Bytes Choices::Take(std::size_t count) {
  const Bytes taken = rest_.first(std::min(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return taken;
}

Kestrel::ReferencePointer<Kestrel::Buffer> BufferOf(Bytes bytes) {
  return Kestrel::CreateBuffer(bytes.data(), bytes.size());
}

Held GetHeld() {
  const auto pool = Kestrel::BufferPool::GetPool();
  Held held = {fakes::GetHeapUse().bytes, Kestrel::GetBufferStatistics().liveBlocks};
  for (const auto list : kLists) {
    const auto count = static_cast<std::int64_t>(pool->GetList(list).GetCount());
    held.heapBytes -= static_cast<std::int64_t>(pool->GetList(list).GetBytesHeld());
    held.heapBytes -= count * static_cast<std::int64_t>(sizeof(Kestrel::Buffer));
    held.buffers -= count;
  }
  return held;
}

void EmptyPool() {
  for (const auto list : kLists) {
    while (Kestrel::BufferPool::GetPool()->GetList(list).GetCount() > 0) {
      auto lent = Kestrel::GetBuffer(list);
      Kestrel::Buffer* const buffer = lent.Get();
      buffer->AddRef();  // the last Release would take it back to the pool
      lent.Reset();
      delete buffer;
    }
  }
}

}  // namespace fuzz
