/// Why the library's static objects are destroyed.
#pragma once

namespace platform {

/// For their destructors; at any other time the result means nothing. True at the end of the process: other threads
/// still run on Linux, and were killed in the middle of anything on Windows, so nothing may be freed or changed, and no
/// lock taken. The system frees everything. False where the library is unloaded and the process goes on: then no thread
/// may be inside it any more, and everything must be freed.
bool ProcessEnds();

/// For the library's entry, before anything else. Without it, on Linux, the end of a process that is linked with the
/// library looks like an unload. It costs one look at a word after the first call, and does nothing on Windows.
void WatchExit();

}  // namespace platform
