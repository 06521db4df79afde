#include "platform/sockets.h"

#include <atomic>

namespace platform {
namespace {

constexpr int WSANOTINITIALISED = 10093;

/// Starts less stops. Sockets need neither here, but callers can observe the count.
constinit std::atomic<int> starts{0};

}  // namespace

int WSAStartup() {
  starts.fetch_add(1, std::memory_order_relaxed);
  return 0;
}

int WSACleanup() {
  int count = starts.load(std::memory_order_relaxed);
  while (count > 0)
    if (starts.compare_exchange_weak(count, count - 1, std::memory_order_relaxed)) return 0;
  return WSANOTINITIALISED;
}

}  // namespace platform
