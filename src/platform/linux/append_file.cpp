#include "platform/append_file.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <new>
#include <optional>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"
#include "platform/linux/write_all.h"

namespace platform {

struct AppendFile {
  int descriptor;
  /// Whether a write may raise a signal. Blocking signals takes two system calls, as long as half a write, and a
  /// regular file raises none before it reaches a limit on sizes.
  std::atomic<bool> mayRaiseSignals;
};

namespace {

bool MayRaiseSignals(int descriptor) {
  struct stat status {};
  rlimit limit{};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return true;
  return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

/// One system call, except where the disk takes only a part or a signal interrupts the call. A part is also what is
/// taken at a limit that was set since the file was opened; the write after it would raise the signal.
bool WriteAll(AppendFile& file, iovec* pieces, int count) {
  std::optional<NoWriteSignals> guard;
  while (count > 0) {
    if (!guard && file.mayRaiseSignals.load(std::memory_order_relaxed)) guard.emplace();
    // A debug line is one piece, and the call for one is cheaper. Without the guard the file is a regular one; pwrite
    // appends to it, whatever the position, and does not lock the descriptor's own position.
    const ssize_t written = count > 1 ? writev(file.descriptor, pieces, count)
                            : guard   ? write(file.descriptor, pieces->iov_base, pieces->iov_len)
                                      : pwrite(file.descriptor, pieces->iov_base, pieces->iov_len, 0);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      if (guard) guard->Drop();
      return false;
    }
    auto left = static_cast<std::size_t>(written);
    for (; count > 0 && left >= pieces->iov_len; ++pieces, --count) left -= pieces->iov_len;
    if (count == 0) return true;
    if (written == 0) return false;
    pieces->iov_base = static_cast<char*>(pieces->iov_base) + left;
    pieces->iov_len -= left;
    file.mayRaiseSignals.store(true, std::memory_order_relaxed);
  }
  return true;
}

}  // namespace

AppendFile* OpenForAppend(const char16_t* path) {
  // O_NONBLOCK, because opening a pipe would wait for its reader. It is taken back, because writing waits for a slow
  // one.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK;
  const int descriptor = open(Utf8Text(path).c_str(), kFlags, 0644);
  if (descriptor < 0) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  fcntl(descriptor, F_SETFL, O_APPEND);
  auto* const file = new (std::nothrow) AppendFile{descriptor, MayRaiseSignals(descriptor)};
  if (file) return file;
  close(descriptor);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

bool Append(AppendFile* file, std::span<const BytePiece> pieces) {
  constexpr std::size_t kPiecesOfACall = 16;
  iovec vector[kPiecesOfACall];
  while (!pieces.empty()) {
    const auto some = pieces.first(std::min(pieces.size(), kPiecesOfACall));
    std::ranges::transform(some, vector, [](BytePiece piece) {
      return iovec{const_cast<std::byte*>(piece.data()), piece.size()};
    });
    if (!WriteAll(*file, vector, static_cast<int>(some.size()))) return false;
    pieces = pieces.subspan(some.size());
  }
  return true;
}

void CloseAppendFile(AppendFile* file) {
  close(file->descriptor);
  delete file;
}

}  // namespace platform
