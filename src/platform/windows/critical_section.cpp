#include "platform/critical_section.h"

#include <new>

#include "platform/windows/api.h"

namespace platform {
namespace {

CRITICAL_SECTION* In(std::byte* storage) {
  return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

}  // namespace

CriticalSection::CriticalSection(std::uint32_t spinCount) {
  static_assert(sizeof(CRITICAL_SECTION) <= sizeof storage_ && alignof(CRITICAL_SECTION) <= 8);
  // The result is not checked, because it is always TRUE since Windows Vista.
  ::InitializeCriticalSectionAndSpinCount(new (storage_) CRITICAL_SECTION, spinCount);
}

CriticalSection::~CriticalSection() {
  ::DeleteCriticalSection(In(storage_));
}

void CriticalSection::lock() {
  ::EnterCriticalSection(In(storage_));
}

void CriticalSection::unlock() {
  ::LeaveCriticalSection(In(storage_));
}

}  // namespace platform
