#include "tools/platform.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

namespace tarnfind::platform {

namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

}  // namespace

std::vector<std::string> Utf8Arguments(int count, char** values) {
  return {values, values + count};
}

void PrepareStreams() {
  signal(SIGPIPE, SIG_IGN);
}

bool IsTerminal(Stream stream) {
  const char* const type = std::getenv("TERM");
  return isatty(stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO) && type && *type &&
         std::strcmp(type, "dumb") != 0;
}

int Write(Stream stream, std::string_view text) {
  std::FILE* const file = stream == Stream::kOutput ? stdout : stderr;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
  return written ? 0 : errno;
}

bool IsReaderGone(int error) {
  return error == EPIPE;
}

TerminalSize GetTerminalSize(Stream stream) {
  winsize size{};
  if (ioctl(stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 ||
      size.ws_row == 0)
    return {};
  return {size.ws_col, size.ws_row};
}

bool IsInputTerminal() {
  return isatty(STDIN_FILENO) != 0;
}

namespace {

/// Turns the echo off for its lifetime.
class SilentTerminal {
 public:
  SilentTerminal() {
    if (tcgetattr(STDIN_FILENO, &before_) != 0) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    taken_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
  }
  ~SilentTerminal() {
    if (taken_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

 private:
  termios before_{};
  bool taken_ = false;
};

}  // namespace

std::optional<std::string> ReadLine(bool echo) {
  const auto silent = echo ? nullptr : std::make_unique<SilentTerminal>();
  std::string line;
  for (;;) {
    // Polling ends on Ctrl-C; reading would begin anew.
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    constexpr int kCheckIntervalMs = 100;
    const int ready = poll(&input, 1, kCheckIntervalMs);
    if (Interrupted()) return std::nullopt;
    if (ready <= 0) continue;
    char part[256];
    const ssize_t count = read(STDIN_FILENO, part, sizeof part);
    if (count <= 0) return std::nullopt;
    line.append(part, static_cast<std::size_t>(count));
    if (!line.ends_with('\n')) continue;
    line.pop_back();
    return line;
  }
}

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) { interrupted.store(true); };
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  struct sigaction before {};
  sigaction(SIGHUP, nullptr, &before);
  const bool outlivesTerminal = before.sa_handler == SIG_IGN;  // as under nohup
  if (!outlivesTerminal) sigaction(SIGHUP, &action, nullptr);
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

std::string_view PlatformLibraryFileName() {
  return "libTarnDBI.so";
}

void* OpenModule(const std::filesystem::path& file, ModuleFailure& failure) {
  void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module) return module;
  // glibc says "NAME: reason". NAME is another library's where that one is missing or wrong.
  const std::string error = dlerror();
  const std::size_t colon = error.find(": ");
  const std::string name = error.substr(0, colon);
  failure.reason = colon == std::string::npos ? error : error.substr(colon + 2);
  if (name != file.string() && colon != std::string::npos) failure.other = name;
  failure.otherMissing = failure.reason.starts_with("cannot open shared object file");
  return nullptr;
}

std::string LoadedModuleFile(const std::string& name) {
  void* const module = dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (!module) return {};
  const link_map* map = nullptr;
  std::string file = dlinfo(module, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : "";
  dlclose(module);
  return file;
}

void* FindSymbol(void* module, const char* name) {
  return dlsym(module, name);
}

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& variables,
                         const std::string& input) {
  const auto failed = [](int code) { return ProgramResult{0, std::generic_category().message(code)}; };
  // A file, because a program that does not read would hold up the writer of a pipe.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
  if (!file || std::fwrite(input.data(), 1, input.size(), file.get()) != input.size()) return failed(errno);
  std::rewind(file.get());

  std::vector<char*> environment;
  for (const std::string& variable : variables) environment.push_back(const_cast<char*>(variable.c_str()));
  // A name that stands twice means its last value to most programs, so the caller's goes.
  const auto isReplaced = [&](std::string_view own) {
    const std::string_view name = own.substr(0, own.find('=') + 1);
    return std::ranges::any_of(variables, [&](std::string_view fresh) { return fresh.starts_with(name); });
  };
  for (char** variable = environ; *variable; ++variable)
    if (!isReplaced(*variable)) environment.push_back(*variable);
  environment.push_back(nullptr);
  char* arguments[] = {const_cast<char*>(program.c_str()), nullptr};

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(file.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);  // this process ignores it
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  pid_t child = 0;
  const int code = posix_spawnp(&child, program.c_str(), &actions, &attributes, arguments, environment.data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (code != 0) return failed(code);

  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return failed(errno);
  constexpr int kBySignal = 128;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : kBySignal + WTERMSIG(status), ""};
}

std::string OpenInBrowser(const std::string& address) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);  // Ctrl-C is for this process alone
  char opener[] = "xdg-open";
  std::string argument = address;
  char* arguments[] = {opener, argument.data(), nullptr};
  pid_t child = 0;
  const int code = posix_spawnp(&child, opener, &actions, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return code == 0 ? "" : std::string(opener) + ": " + std::generic_category().message(code);
}

// Here this option ignores connections of an earlier run in TIME_WAIT; a second listener is refused all the same.
void PrepareListener(std::uintptr_t socket) {
  const int yes = 1;
  setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

void SetEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void ShowDebuggerLines() {
  SetEnvironment("TARN_DEBUGGER", "stderr");
}

}  // namespace tarnfind::platform
