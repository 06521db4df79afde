/// What every fuzz target shares: the input as a cursor, properties that end the run where they do not hold, the bound
/// on memory, and memory that runs out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "base/exceptions.h"
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

/// Cuts size and address off the text of a blob, because the address differs between two readings of the same bytes.
template <class Text>
Text WithoutAddress(Text text) {
  constexpr std::string_view kBlob = "blobptr ";
  if (text.size() > kBlob.size() && std::equal(kBlob.begin(), kBlob.end(), text.begin())) text.resize(kBlob.size());
  return text;
}

/// The largest memory that an input of that size may take at any time.
constexpr std::int64_t MemoryBound(std::size_t inputBytes) {
  return 64 * static_cast<std::int64_t>(inputBytes) + (1 << 20);
}

/// What lives, apart from the buffers that wait in the pool.
struct Held {
  std::int64_t heapBytes = 0;
  std::int64_t buffers = 0;
  friend bool operator==(const Held&, const Held&) = default;
};
Held GetHeld();

/// Deletes the buffers that wait in the pool, so that what the work allocates depends on the input alone.
void EmptyPool();

/// Runs the work on an input; checks that it keeps within the memory bound and leaves nothing behind but pooled
/// buffers.
template <class Work>
void Bounded(Bytes input, Work work) {
  EmptyPool();
  const Held before = GetHeld();
  const std::int64_t bytesBefore = fakes::GetHeapUse().bytes;
  fakes::ResetHeapPeak();
  work();
  Check(fakes::GetHeapUse().peak - bytesBefore <= MemoryBound(input.size()),
        "memory stays within 64 times the input and 1 MiB");
  Check(GetHeld() == before, "nothing is left behind but pooled buffers");
}

/// Returns the work's result. Where n is not 0, the work also runs with its n-th allocation failing: that ends in
/// std::bad_alloc, OutOfMemoryException or a result that isStated(result, usual) allows, leaves nothing behind, and the
/// work then gives the usual result again.
template <class Work, class IsStated>
auto WithFailingAllocation(std::uint8_t n, Work work, IsStated isStated) {
  const auto usual = work();
  if (n == 0) return usual;
  EmptyPool();
  const Held before = GetHeld();
  {
    const fakes::FailingAllocation failing(n);
    bool thrown = true;
    try {
      const auto result = work();
      thrown = false;
      Check(failing.HasFailed() ? isStated(result, usual) : result == usual, "missing memory ends in a stated result");
    } catch (const std::bad_alloc&) {
    } catch (const Kestrel::OutOfMemoryException&) {
    }
    Check(!thrown || failing.HasFailed(), "memory is missing only where an allocation failed");
  }
  Check(GetHeld() == before, "a failure leaves nothing behind");
  Check(work() == usual, "the work goes on as before");
  return usual;
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
