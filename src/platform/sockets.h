/// The socket library's start and stop, which are counted: each successful start needs a stop. On Linux sockets need
/// neither, and only the count exists. Thread-safe.
#pragma once

namespace platform {

/// Asks for version 2.2. Returns 0 or a socket error code.
int WSAStartup();
/// Returns 0 or a socket error code: 10093 where nothing is started.
int WSACleanup();

}  // namespace platform
