#include "platform/append_file.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"
#include "platform/linux/write_all.h"

namespace platform {
namespace {

/// The handle is the descriptor plus one, so that descriptor 0 is not null.
AppendFile* Handle(int descriptor) {
  return reinterpret_cast<AppendFile*>(static_cast<std::intptr_t>(descriptor) + 1);
}
int Descriptor(AppendFile* file) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(file) - 1);
}

/// One system call, except where the disk takes only a part or a signal interrupts the call.
bool WriteAll(int descriptor, iovec* pieces, int count) {
  while (count > 0) {
    const ssize_t written = writev(descriptor, pieces, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    auto left = static_cast<std::size_t>(written);
    for (; count > 0 && left >= pieces->iov_len; ++pieces, --count) left -= pieces->iov_len;
    if (count == 0) return true;
    if (written == 0) return false;
    pieces->iov_base = static_cast<char*>(pieces->iov_base) + left;
    pieces->iov_len -= left;
  }
  return true;
}

}  // namespace

AppendFile* OpenForAppend(const char16_t* path) {
  const int descriptor = open(Utf8Text(path).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (descriptor >= 0) return Handle(descriptor);
  SetLastError(ERROR_FILE_NOT_FOUND);
  return nullptr;
}

bool Append(AppendFile* file, std::span<const BytePiece> pieces) {
  constexpr std::size_t kPiecesOfACall = 16;
  NoWriteSignals guard;
  iovec vector[kPiecesOfACall];
  while (!pieces.empty()) {
    const auto some = pieces.first(std::min(pieces.size(), kPiecesOfACall));
    std::ranges::transform(some, vector, [](BytePiece piece) {
      return iovec{const_cast<std::byte*>(piece.data()), piece.size()};
    });
    if (!WriteAll(Descriptor(file), vector, static_cast<int>(some.size()))) {
      guard.Drop();
      return false;
    }
    pieces = pieces.subspan(some.size());
  }
  return true;
}

void CloseAppendFile(AppendFile* file) {
  close(Descriptor(file));
}

}  // namespace platform
