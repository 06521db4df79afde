/// Writing for diagnostics, which must neither end the host nor be cut by its signals.
#pragma once

#include <string_view>

namespace platform {

/// Writes the whole text, in one system call where the system takes it at once, and again where a signal interrupts it.
/// A reader that has gone, or a file at its limit, is a failure and raises no signal. False on failure; part of the
/// text may have been written then.
bool WriteAll(int descriptor, std::string_view text);

}  // namespace platform
