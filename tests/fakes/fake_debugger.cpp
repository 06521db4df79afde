#include "fakes/fake_debugger.h"

#include <mutex>

#include "platform/debugger.h"

namespace {

struct Recorded {
  std::mutex lock;
  std::vector<std::u16string> wide;
  std::vector<std::string> narrow;
};

// Never destroyed: the library writes lines while it is unloaded.
Recorded& Calls() {
  static Recorded* const calls = new Recorded;
  return *calls;
}

}  // namespace

void platform::OutputDebugStringW(const char16_t* text) {
  const std::lock_guard guard(Calls().lock);
  Calls().wide.emplace_back(text);
}
void platform::OutputDebugStringA(const char* text) {
  const std::lock_guard guard(Calls().lock);
  Calls().narrow.emplace_back(text);
}

std::vector<std::u16string> fakes::DebuggerLines() {
  const std::lock_guard guard(Calls().lock);
  return Calls().wide;
}
std::vector<std::string> fakes::NarrowDebuggerLines() {
  const std::lock_guard guard(Calls().lock);
  return Calls().narrow;
}
void fakes::ClearDebuggerLines() {
  const std::lock_guard guard(Calls().lock);
  Calls().wide.clear();
  Calls().narrow.clear();
}
