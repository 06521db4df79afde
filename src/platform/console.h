/// The process's console. A handle that is no console makes the functions fail, as output redirected to a file does.
#pragma once

#include <cstdint>

namespace platform {

using ConsoleHandle = void*;
inline ConsoleHandle InvalidConsoleHandle() {
  return reinterpret_cast<ConsoleHandle>(-1);
}

inline constexpr std::uint32_t STD_OUTPUT_HANDLE = 0xFFFFFFF5;
inline constexpr std::uint32_t STD_ERROR_HANDLE = 0xFFFFFFF4;

/// InvalidConsoleHandle() on failure; null where the process has no such handle.
ConsoleHandle GetStdHandle(std::uint32_t which);
/// True where the process has a console window (on Linux: where standard output is a terminal).
bool HasConsoleWindow();
bool WriteConsoleW(ConsoleHandle console, const char16_t* text, std::uint32_t units);
/// attributes: foreground in bits 0 to 3 (blue 1, green 2, red 4, bright 8).
bool SetConsoleTextAttribute(ConsoleHandle console, std::uint16_t attributes);
bool GetConsoleTextAttribute(ConsoleHandle console, std::uint16_t* attributes);
/// Flushes the narrow standard-output stream of the C++ library.
void FlushStandardOutput();

}  // namespace platform
