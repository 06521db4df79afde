#include "simulator/platform/threads.h"

#include <windows.h>

#include <system_error>
#include <utility>

namespace simulator {

/// Empty, because each thread keeps the module loaded by itself.
struct ThreadGroup::State {};

namespace {

struct Launch {
  std::function<void()> body;
  HMODULE module;
};

/// Objects with a destructor live in here, because FreeLibraryAndExitThread runs no destructor.
HMODULE RunBody(Launch* launch) {
  const std::unique_ptr<Launch> owned(launch);
  owned->body();
  owned->body = nullptr;
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
  auto launch = std::make_unique<Launch>(Launch{std::move(body), module});
  const HANDLE thread = CreateThread(nullptr, 0, ThreadMain, launch.get(), 0, nullptr);
  if (!thread) {
    const DWORD code = GetLastError();
    FreeLibrary(module);
    SetLastError(code);
    ThrowLastError("CreateThread");
  }
  launch.release();
  CloseHandle(thread);
}

void ThreadGroup::End(const std::function<void()>&) {}

void ThreadGroup::LetGo() {}

}  // namespace simulator
