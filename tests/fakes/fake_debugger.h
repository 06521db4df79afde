/// Stands in for the debugger: a test program that lists fake_debugger.cpp among its sources records what the library
/// sends there. Thread-safe, and usable until the process ends.
#pragma once

#include <string>
#include <vector>

namespace fakes {

/// The texts of all OutputDebugStringW calls since the last clearing, oldest first.
std::vector<std::u16string> DebuggerLines();
/// Likewise of all OutputDebugStringA calls.
std::vector<std::string> NarrowDebuggerLines();
/// Forgets both.
void ClearDebuggerLines();

}  // namespace fakes
