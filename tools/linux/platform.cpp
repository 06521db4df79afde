#include "tools/platform.h"

#include <dlfcn.h>
#include <iconv.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

// The library takes its code page from the same setting, and 1252 where it is not set or empty.
std::string Utf8FromSystemText(const std::string& text) {
  const char* const setting = std::getenv("TARN_ANSI_CODE_PAGE");
  const iconv_t converter = iconv_open("UTF-8", ("CP" + std::string(setting && *setting ? setting : "1252")).c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) return text;
  std::string source = text;
  std::string result(text.size() * 4, '\0');  // no character takes more
  char* from = source.data();
  std::size_t left = source.size();
  char* to = result.data();
  std::size_t room = result.size();
  constexpr auto kFailed = static_cast<std::size_t>(-1);
  // The second call gets the letter that the pages with combining characters hold back.
  const bool converted = iconv(converter, &from, &left, &to, &room) != kFailed &&
                         iconv(converter, nullptr, nullptr, &to, &room) != kFailed;
  iconv_close(converter);
  if (!converted) return text;
  result.resize(result.size() - room);
  return result;
}

void ShowDebuggerLines() {
  setenv("TARN_DEBUGGER", "stderr", 1);
}

}  // namespace tarnfind::platform
