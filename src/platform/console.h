/// The process's console. On Linux it is a terminal, a handle stands for its file descriptor, and colours are escape
/// sequences.
///
/// With a handle that is no console, for example that of a file, the functions fail: they return false with the
/// thread's last error set. Thread-safe; the texts of two calls do not mix, except on Linux where a signal interrupts
/// one.
#pragma once

#include <cstdint>

namespace platform {

using ConsoleHandle = void*;
inline ConsoleHandle InvalidConsoleHandle() {
  return reinterpret_cast<ConsoleHandle>(-1);
}

inline constexpr std::uint32_t STD_OUTPUT_HANDLE = 0xFFFFFFF5;
inline constexpr std::uint32_t STD_ERROR_HANDLE = 0xFFFFFFF4;

/// The handle is the process's and is not closed. InvalidConsoleHandle() on failure; null where the process has none.
ConsoleHandle GetStdHandle(std::uint32_t which);
/// Windows: the process has a console window. Linux: standard output is a terminal.
bool HasConsoleWindow();
/// Writes units of text as they are, control characters too.
bool WriteConsoleW(ConsoleHandle console, const char16_t* text, std::uint32_t units);
/// attributes: the colour of the text in bits 0 to 3 (blue 1, green 2, red 4, bright 8). Linux knows no others, and
/// takes 7 for the terminal's own colour.
bool SetConsoleTextAttribute(ConsoleHandle console, std::uint16_t attributes);
/// On Linux what was set last, or 7, because a terminal cannot be asked.
bool GetConsoleTextAttribute(ConsoleHandle console, std::uint16_t* attributes);
/// Flushes the narrow standard-output stream of the C++ library, so that what stands in it comes before a console text.
/// Throws std::ios_base::failure where that fails and the stream's exceptions are enabled.
void FlushStandardOutput();

}  // namespace platform
