/// A file that is only ever appended to, also by several processes at once.
///
/// Errors: a write that fails raises no signal in the host. On Linux with one exception: a limit on the size of files
/// that is set while the file is open, to no more than the file has by then, goes unnoticed, and the system raises
/// SIGXFSZ.
#pragma once

#include <cstddef>
#include <span>

namespace platform {

struct AppendFile;  ///< an open file; opaque

/// Opens the file, or creates it; what is in it stays. Child processes do not inherit it. Null on failure, with the
/// last error set.
AppendFile* OpenForAppend(const char16_t* path);

/// Bytes at one place in memory.
using BytePiece = std::span<const std::byte>;
/// Appends the pieces, one after the other. When it returns true the system holds them, so that they survive the end of
/// the process. False where they are not all written; a part of them may be.
bool Append(AppendFile* file, std::span<const BytePiece> pieces);

void CloseAppendFile(AppendFile* file);

}  // namespace platform
