/// The program's general heap, counted, and failing on demand: replaces operator new and delete of the whole program.
#pragma once

#include <cstdint>

namespace fakes {

struct HeapUse {
  std::int64_t bytes = 0;  ///< held now
  std::int64_t peak = 0;   ///< most held since ResetHeapPeak
  std::int64_t blocks = 0;
};
HeapUse GetHeapUse();
void ResetHeapPeak();

/// While it lives, the n-th allocation of any thread from here on fails with std::bad_alloc; n counts from 1. 0: none.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::int64_t n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  /// Whether the n-th allocation was made, and failed.
  bool HasFailed() const;
};

/// Allocations since the program began.
std::int64_t CountAllocations();

}  // namespace fakes
