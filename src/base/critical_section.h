/// The library's lock: recursive, with the spin count that all its locks have. Use it with std::lock_guard.
#pragma once

#include "platform/critical_section.h"

namespace Kestrel {

class CriticalSection : public platform::CriticalSection {
 public:
  static constexpr std::uint32_t kSpinCount = 1000;
  CriticalSection() : platform::CriticalSection(kSpinCount) {}
};

}  // namespace Kestrel
