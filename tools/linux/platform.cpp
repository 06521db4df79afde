#include "tools/platform.h"

#include <dlfcn.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tarnfind::platform {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

bool UnderstandsControlSequences(int descriptor) {
  const char* const type = std::getenv("TERM");
  return isatty(descriptor) && type && *type && std::strcmp(type, "dumb") != 0;
}

}  // namespace

std::vector<std::string> Utf8Arguments(int count, char** values) {
  return {values, values + count};
}

void PrepareStandardOutput() {
  signal(SIGPIPE, SIG_IGN);
}

bool OutputIsTerminal() {
  return UnderstandsControlSequences(STDOUT_FILENO);
}

bool ErrorIsTerminal() {
  return UnderstandsControlSequences(STDERR_FILENO);
}

bool IsReaderGone(int error) {
  return error == EPIPE;
}

TerminalSize GetTerminalSize() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {};
  return {size.ws_col, size.ws_row};
}

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted.store(true); };
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool Interrupted() {
  return interrupted.load();
}

std::filesystem::path ExecutableFolder() {
  std::error_code failed;
  return std::filesystem::read_symlink("/proc/self/exe", failed).parent_path();
}

std::string_view LibraryFileName() {
  return "libTarnCameraFinding.so";
}

void* OpenModule(const std::filesystem::path& file, std::string& error) {
  void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module) return module;
  error = dlerror();
  const std::string prefix = file.string() + ": ";
  if (error.starts_with(prefix)) error.erase(0, prefix.size());
  return nullptr;
}

void* FindSymbol(void* module, const char* name) {
  return dlsym(module, name);
}

void ShowDebuggerLines() {
  setenv("TARN_DEBUGGER", "stderr", 1);
}

}  // namespace tarnfind::platform
