/// What every fuzz target shares: the input as a cursor, properties that end the run where they do not hold, and the
/// bound on memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "fakes/counting_allocator.h"
#include "valuelist/buffer.h"

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Ends the run with the text where the property does not hold.
void Check(bool holds, const char* property);

/// Takes choices from the front of the input; zeroes where it is used up.
class Choices {
 public:
  explicit Choices(Bytes input) : rest_(input) {}
  std::uint8_t Byte();
  std::uint8_t Below(std::uint8_t limit) { return static_cast<std::uint8_t>(Byte() % limit); }
  /// At most that many bytes of what is left.
  Bytes Take(std::size_t count);
  Bytes Rest() const { return rest_; }
  bool IsEmpty() const { return rest_.empty(); }

 private:
  Bytes rest_;
};

/// A pooled buffer of exactly these bytes.
Kestrel::ReferencePointer<Kestrel::Buffer> BufferOf(Bytes bytes);

/// The largest memory that an input of that size may take at any time.
constexpr std::int64_t MemoryBound(std::size_t inputBytes) {
  return 64 * static_cast<std::int64_t>(inputBytes) + (1 << 20);
}

/// Runs the work on an input; checks that it keeps within the memory bound and leaves nothing behind but pooled
/// buffers.
template <class Work>
void Bounded(Bytes input, Work work) {
  const fakes::HeapUse before = fakes::GetHeapUse();
  fakes::ResetHeapPeak();
  work();
  Check(fakes::GetHeapUse().peak - before.bytes <= MemoryBound(input.size()),
        "memory stays within 64 times the input and 1 MiB");
}

}  // namespace fuzz

/// A target: FUZZ_TARGET(input) { … }
#define FUZZ_TARGET(input)                                                            \
  static void RunTarget(fuzz::Bytes input);                                           \
  extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
    RunTarget({data, size});                                                          \
    return 0;                                                                         \
  }                                                                                   \
  static void RunTarget(fuzz::Bytes input)
