#include "platform/console.h"

#include <cstdio>

#include "platform/windows/api.h"

namespace platform {

ConsoleHandle GetStdHandle(std::uint32_t which) {
  return ::GetStdHandle(which);
}

bool HasConsoleWindow() {
  return ::GetConsoleWindow() != nullptr;
}

bool WriteConsoleW(ConsoleHandle console, const char16_t* text, std::uint32_t units) {
  DWORD written = 0;
  return ::WriteConsoleW(console, text, units, &written, nullptr) != FALSE;
}

bool SetConsoleTextAttribute(ConsoleHandle console, std::uint16_t attributes) {
  return ::SetConsoleTextAttribute(console, attributes) != FALSE;
}

bool GetConsoleTextAttribute(ConsoleHandle console, std::uint16_t* attributes) {
  CONSOLE_SCREEN_BUFFER_INFO information;
  if (!::GetConsoleScreenBufferInfo(console, &information)) return false;
  *attributes = information.wAttributes;
  return true;
}

// Of the C library, behind which std::cout keeps nothing back. With std::cout itself the module would have a destructor
// that flushes it at the end of the process, and waits there for a lock that a killed thread may hold.
void FlushStandardOutput() {
  std::fflush(stdout);
}

}  // namespace platform
