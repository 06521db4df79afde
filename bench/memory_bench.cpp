/// Bytes of the heap that decoding a reply takes. This program replaces malloc, which counts while `counting` is set.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "protocol/camera_reply.h"
#include "sample.h"

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace {

std::atomic<bool> counting{false};
std::atomic<std::int64_t> live{0}, peak{0};

void* Count(void* block) {
  if (!block || !counting.load(std::memory_order_relaxed)) return block;
  const auto size = static_cast<std::int64_t>(malloc_usable_size(block));
  const std::int64_t now = live.fetch_add(size) + size;
  for (std::int64_t seen = peak.load(); now > seen && !peak.compare_exchange_weak(seen, now);) {
  }
  return block;
}

void Drop(void* block) {
  if (block && counting.load(std::memory_order_relaxed))
    live.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)));
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
  return Count(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
  return Count(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
  Drop(block);
  void* const moved = __libc_realloc(block, size);
  Count(moved || size == 0 ? moved : block);
  return moved;
}
void* memalign(std::size_t alignment, std::size_t size) {
  return Count(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return Count(__libc_memalign(alignment, size));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = Count(__libc_memalign(alignment, size));
  return *block ? 0 : ENOMEM;
}
void free(void* block) {
  Drop(block);
  __libc_free(block);
}
}

namespace {

using namespace Tarn::CameraFinding;

void ReplyMemory(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const sample::Bytes reply = sample::Reply(count);
  std::int64_t kept = 0;
  for (auto _ : state) {
    live = peak = 0;
    counting = true;
    const std::vector<CameraRecord> records = ReadCameraReply(reply);
    kept = live;
    counting = false;
    sample::Require(records.size() == count, "reply");
  }
  const auto cameras = static_cast<double>(count);
  state.counters["peak"] = static_cast<double>(peak) / cameras;
  state.counters["kept"] = static_cast<double>(kept) / cameras;
  state.counters["extra"] = static_cast<double>(peak - kept) / cameras;
}
BENCHMARK(ReplyMemory)->ArgName("cameras")->RangeMultiplier(10)->Range(1, 100000)->Iterations(3);

}  // namespace
