#include "platform/console.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <string>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"
#include "platform/linux/write_all.h"

namespace platform {
namespace {

/// Grey: the colour of a new console on Windows.
constexpr std::uint16_t kOrdinaryAttributes = 7;

/// The attributes that were set last, kept because a terminal cannot be asked.
constinit std::atomic<std::uint16_t> attributesInForce{kOrdinaryAttributes};

/// The handle of a console is its file descriptor.
int DescriptorOf(ConsoleHandle console) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(console));
}

bool IsTerminal(ConsoleHandle console) {
  if (console && console != InvalidConsoleHandle() && isatty(DescriptorOf(console))) return true;
  SetLastError(ERROR_INVALID_HANDLE);
  return false;
}

bool Write(ConsoleHandle console, std::string_view text) {
  if (!IsTerminal(console)) return false;
  if (WriteAll(DescriptorOf(console), text)) return true;
  SetLastError(ERROR_INVALID_HANDLE);
  return false;
}

/// The control sequence "select graphic rendition". The ordinary attributes give back the terminal's own colour.
std::string EscapeSequence(std::uint16_t attributes) {
  if (attributes == kOrdinaryAttributes) return "\x1b[0m";
  const int blue = attributes & 1, green = attributes >> 1 & 1, red = attributes >> 2 & 1;
  const int base = attributes & 8 ? 90 : 30;
  return "\x1b[" + std::to_string(base + red + 2 * green + 4 * blue) + "m";
}

}  // namespace

ConsoleHandle GetStdHandle(std::uint32_t which) {
  if (which != STD_OUTPUT_HANDLE && which != STD_ERROR_HANDLE) {
    SetLastError(ERROR_INVALID_HANDLE);
    return InvalidConsoleHandle();
  }
  const int descriptor = which == STD_OUTPUT_HANDLE ? STDOUT_FILENO : STDERR_FILENO;
  if (fcntl(descriptor, F_GETFD) < 0) return nullptr;
  return reinterpret_cast<ConsoleHandle>(std::intptr_t{descriptor});
}

bool HasConsoleWindow() {
  return isatty(STDOUT_FILENO) == 1;
}

bool WriteConsoleW(ConsoleHandle console, const char16_t* text, std::uint32_t units) {
  return Write(console, Utf8Text({text, units}));
}

bool SetConsoleTextAttribute(ConsoleHandle console, std::uint16_t attributes) {
  if (!Write(console, EscapeSequence(attributes))) return false;
  attributesInForce.store(attributes, std::memory_order_relaxed);
  return true;
}

bool GetConsoleTextAttribute(ConsoleHandle console, std::uint16_t* attributes) {
  if (!IsTerminal(console)) return false;
  *attributes = attributesInForce.load(std::memory_order_relaxed);
  return true;
}

void FlushStandardOutput() {
  std::cout.flush();
}

}  // namespace platform
