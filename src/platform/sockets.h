/// The socket library's start and stop; counted by the system.
#pragma once

#include <cstdint>

namespace platform {

/// Requested version 2.2. Returns 0 or an error code.
int WSAStartup();
int WSACleanup();

}  // namespace platform
