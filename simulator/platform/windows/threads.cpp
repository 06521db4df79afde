#include "simulator/platform/threads.h"

#include <windows.h>

#include <atomic>
#include <system_error>
#include <utility>

namespace simulator {

struct ThreadGroup::State {
  std::atomic<int> running{0};
};

namespace {

struct Launch {
  std::function<void()> body;
  std::atomic<int>& running;
  HMODULE module;
};

/// Objects with a destructor live in here, because FreeLibraryAndExitThread runs no destructor.
HMODULE RunBody(Launch* launch) {
  const std::unique_ptr<Launch> owned(launch);
  owned->body();
  owned->body = nullptr;
  owned->running.fetch_sub(1);
  return owned->module;
}

DWORD WINAPI ThreadMain(void* launch) {
  FreeLibraryAndExitThread(RunBody(static_cast<Launch*>(launch)), 0);
}

[[noreturn]] void ThrowLastError(const char* function) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), function);
}

}  // namespace

ThreadGroup::ThreadGroup() : state_(std::make_unique<State>()) {}

ThreadGroup::~ThreadGroup() = default;

void ThreadGroup::Start(std::function<void()> body) {
  HMODULE module = nullptr;
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&ThreadMain),
                          &module)) {
    ThrowLastError("GetModuleHandleExW");
  }
  auto launch = std::make_unique<Launch>(Launch{std::move(body), state_->running, module});
  state_->running.fetch_add(1);
  const HANDLE thread = CreateThread(nullptr, 0, ThreadMain, launch.get(), 0, nullptr);
  if (!thread) {
    const DWORD code = GetLastError();
    state_->running.fetch_sub(1);
    FreeLibrary(module);
    SetLastError(code);
    ThrowLastError("CreateThread");
  }
  launch.release();
  CloseHandle(thread);
}

bool ThreadGroup::End(const std::function<void()>&) {
  return state_->running.load() == 0;
}

}  // namespace simulator
