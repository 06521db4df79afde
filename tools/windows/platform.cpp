#include "tools/platform.h"

// The COM headers bring the system's base header.
#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <shellapi.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>

namespace tarnfind::platform {

namespace {

/// Raised by the system for each text that a program sends to its debugger.
constexpr DWORD kNarrowDebuggerText = 0x40010006;  // [0] characters with the NUL, [1] the text
constexpr DWORD kWideDebuggerText = 0x4001000A;    // the same in UTF-16

std::atomic<bool> interrupted = false;
bool outputIsTerminal = false;
bool errorIsTerminal = false;
UINT outputCodePageBefore = 0;

std::string Utf8(const WCHAR* text, int units) {
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, units, result.data(), bytes, nullptr, nullptr);
  return result;
}

bool EnableControlSequences(DWORD stream) {
  const HANDLE console = GetStdHandle(stream);
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
  const bool asked = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  return asked && !interrupted.exchange(true);
}

/// Writes straight to the handle: the handler also runs while the process ends, when no stream may be left.
void WriteError(std::string_view text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

LONG CALLBACK OnDebuggerText(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  const bool wide = record.ExceptionCode == kWideDebuggerText;
  if (!wide && record.ExceptionCode != kNarrowDebuggerText) return EXCEPTION_CONTINUE_SEARCH;
  const std::size_t length = record.ExceptionInformation[0];
  if (record.NumberParameters >= 2 && length > 1 && length < std::numeric_limits<int>::max()) {
    if (wide)
      WriteError(Utf8(reinterpret_cast<const WCHAR*>(record.ExceptionInformation[1]), static_cast<int>(length) - 1));
    else
      WriteError({reinterpret_cast<const char*>(record.ExceptionInformation[1]), length - 1});
  }
  return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

std::vector<std::string> Utf8Arguments(int count, char** values) {
  int wideCount = 0;
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> wide(CommandLineToArgvW(GetCommandLineW(), &wideCount),
                                                           &LocalFree);
  if (!wide) return {values, values + count};
  std::vector<std::string> result;
  for (int i = 0; i < wideCount; ++i) result.push_back(Utf8(wide.get()[i], lstrlenW(wide.get()[i])));
  return result;
}

void PrepareStandardOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  outputIsTerminal = EnableControlSequences(STD_OUTPUT_HANDLE);
  errorIsTerminal = EnableControlSequences(STD_ERROR_HANDLE);
  if (!outputIsTerminal && !errorIsTerminal) return;
  outputCodePageBefore = GetConsoleOutputCP();
  if (SetConsoleOutputCP(CP_UTF8)) std::atexit([] { SetConsoleOutputCP(outputCodePageBefore); });
}

bool OutputIsTerminal() {
  return outputIsTerminal;
}

bool ErrorIsTerminal() {
  return errorIsTerminal;
}

// The C runtime knows no EPIPE here; a pipe without a reader leaves EINVAL behind.
bool IsReaderGone(int error) {
  return error == EPIPE || error == EINVAL;
}

TerminalSize GetTerminalSize() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return {};
  return {info.srWindow.Right - info.srWindow.Left + 1, info.srWindow.Bottom - info.srWindow.Top + 1};
}

void CatchInterrupts() {
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool Interrupted() {
  return interrupted.load();
}

std::filesystem::path ExecutableFolder() {
  std::vector<WCHAR> path(MAX_PATH);
  for (;;) {
    const DWORD units = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (units == 0) return {};
    if (units < path.size()) return std::filesystem::path(path.data(), path.data() + units).parent_path();
    path.resize(path.size() * 2);
  }
}

std::string_view LibraryFileName() {
  return "TarnCameraFinding.dll";
}

// With a folder in its path, a library's own libraries are looked for beside it.
void* OpenModule(const std::filesystem::path& file, std::string& error) {
  const HMODULE module =
      LoadLibraryExW(file.c_str(), nullptr, file.has_parent_path() ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
  if (module) return module;
  const DWORD code = GetLastError();
  WCHAR text[512];
  const DWORD units = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                                     static_cast<DWORD>(std::size(text)), nullptr);
  error = "error " + std::to_string(code) + (units ? ": " + Utf8(text, static_cast<int>(units)) : "");
  return nullptr;
}

void* FindSymbol(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void ShowDebuggerLines() {
  AddVectoredExceptionHandler(1, OnDebuggerText);
}

}  // namespace tarnfind::platform
