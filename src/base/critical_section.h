/// The lock of the library: recursive, with the spin count that all its locks have. It is used with std::lock_guard. At
/// namespace scope it is a StaticLock instead (static_lock.h).
#pragma once

#include "platform/critical_section.h"

namespace Kestrel {

class CriticalSection : public platform::CriticalSection {
 public:
  static constexpr std::uint32_t kSpinCount = 1000;
  CriticalSection() : platform::CriticalSection(kSpinCount) {}
};

}  // namespace Kestrel
