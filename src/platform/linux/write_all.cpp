#include "platform/linux/write_all.h"

#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace platform {
NoWriteSignals::NoWriteSignals() {
  sigset_t pending;
  sigpending(&pending);
  sigemptyset(&signals_);
  // One that is pending already is the host's: it blocks that signal itself, and must find it later.
  for (const int signal : {SIGPIPE, SIGXFSZ})
    if (!sigismember(&pending, signal)) sigaddset(&signals_, signal);
  pthread_sigmask(SIG_BLOCK, &signals_, &before_);
}

NoWriteSignals::~NoWriteSignals() {
  constexpr std::timespec kNoTime{};
  while (sigtimedwait(&signals_, nullptr, &kNoTime) > 0 || errno == EINTR) {
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool WriteAll(int descriptor, std::string_view text) {
  const NoWriteSignals guard;
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0)
      text.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      return false;
  }
  return true;
}

}  // namespace platform
