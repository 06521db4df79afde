#include "fakes/fake_debugger.h"

#include <mutex>

#include "platform/debugger.h"

namespace {

/// Never destroyed: the library writes lines while it is unloaded.
struct Recorded {
  std::unique_lock<std::mutex> guard;
  std::vector<std::u16string>& wide;
  std::vector<std::string>& narrow;
};

Recorded Calls() {
  static auto* const lock = new std::mutex;
  static auto* const wide = new std::vector<std::u16string>;
  static auto* const narrow = new std::vector<std::string>;
  return {std::unique_lock(*lock), *wide, *narrow};
}

}  // namespace

void platform::OutputDebugStringW(const char16_t* text) {
  Calls().wide.emplace_back(text);
}
void platform::OutputDebugStringA(const char* text) {
  Calls().narrow.emplace_back(text);
}

std::vector<std::u16string> fakes::DebuggerLines() {
  return Calls().wide;
}
std::vector<std::string> fakes::NarrowDebuggerLines() {
  return Calls().narrow;
}
void fakes::ClearDebuggerLines() {
  const Recorded calls = Calls();
  calls.wide.clear();
  calls.narrow.clear();
}
