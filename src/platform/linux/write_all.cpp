#include "platform/linux/write_all.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace platform {
namespace {

constexpr int kWriteSignals[] = {SIGPIPE, SIGXFSZ};

}  // namespace

NoWriteSignals::NoWriteSignals() {
  sigemptyset(&signals_);
  for (const int signal : kWriteSignals) sigaddset(&signals_, signal);
  pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  // A signal that is pending already is the host's and must stay. Only a signal that the host blocks can be pending.
  sigset_t pending;
  if (std::ranges::none_of(kWriteSignals, [this](int signal) { return sigismember(&before_, signal); })) return;
  sigpending(&pending);
  for (const int signal : kWriteSignals)
    if (sigismember(&pending, signal)) sigdelset(&signals_, signal);
}

NoWriteSignals::~NoWriteSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void NoWriteSignals::Drop() {
  constexpr std::timespec kNoTime{};
  while (sigtimedwait(&signals_, nullptr, &kNoTime) > 0 || errno == EINTR) {
  }
}

bool WriteAll(int descriptor, std::string_view text) {
  NoWriteSignals guard;
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      guard.Drop();
      return false;
    }
  }
  return true;
}

}  // namespace platform
