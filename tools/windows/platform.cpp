#include "tools/platform.h"

// Before windows.h, which objbase.h brings, because windows.h alone may bring the older winsock.h.
#include <winsock2.h>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>

namespace tarnfind::platform {

namespace {

/// Raised by the system for each text that a program sends to its debugger: DBG_PRINTEXCEPTION_C and
/// DBG_PRINTEXCEPTION_WIDE_C.
constexpr DWORD kNarrowDebuggerText = 0x40010006;  // [0] characters with the NUL, [1] the text
constexpr DWORD kWideDebuggerText = 0x4001000A;    // the same in UTF-16

std::atomic<bool> interrupted = false;

/// What stands behind a standard stream.
struct Target {
  DWORD handleNumber;
  std::FILE* file;
  HANDLE console = nullptr;  ///< null where the stream is redirected
  bool obeysSequences = false;
};
Target outputTarget = {STD_OUTPUT_HANDLE, stdout};
Target errorTarget = {STD_ERROR_HANDLE, stderr};

Target& TargetOf(Stream stream) {
  return stream == Stream::kOutput ? outputTarget : errorTarget;
}

std::string Utf8(const WCHAR* text, int units) {
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, units, result.data(), bytes, nullptr, nullptr);
  return result;
}

std::vector<WCHAR> Wide(UINT codePage, std::string_view text) {
  std::vector<WCHAR> result(text.size());  // no character has more units than bytes
  const int bytes = static_cast<int>(text.size());
  result.resize(static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), bytes, result.data(), bytes)));
  return result;
}

/// A console may accept the mode and then show the sequences as text. So one without effect is written: where the
/// cursor moves, it is wiped out again.
bool ObeysSequences(HANDLE console) {
  constexpr WCHAR kNoEffect[] = L"\x1b[0m";
  constexpr DWORD kLength = std::size(kNoEffect) - 1;
  DWORD mode = 0;
  DWORD written = 0;
  CONSOLE_SCREEN_BUFFER_INFO before{};
  CONSOLE_SCREEN_BUFFER_INFO after{};
  if (!GetConsoleMode(console, &mode) || !SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) ||
      !GetConsoleScreenBufferInfo(console, &before) || !WriteConsoleW(console, kNoEffect, kLength, &written, nullptr) ||
      !GetConsoleScreenBufferInfo(console, &after))
    return false;
  if (after.dwCursorPosition.X == before.dwCursorPosition.X) return true;
  FillConsoleOutputCharacterW(console, L' ', kLength, before.dwCursorPosition, &written);
  SetConsoleCursorPosition(console, before.dwCursorPosition);
  return false;
}

void Prepare(Target& target) {
  _setmode(_fileno(target.file), _O_BINARY);
  const HANDLE handle = GetStdHandle(target.handleNumber);
  DWORD mode = 0;
  if (!GetConsoleMode(handle, &mode)) return;
  target.console = handle;
  target.obeysSequences = ObeysSequences(handle);
}

/// A line with its end. It is read in parts, because what one call has no room for is the beginning of the next call's.
std::optional<std::vector<WCHAR>> ReadConsoleLine(HANDLE console) {
  std::vector<WCHAR> line;
  do {
    WCHAR part[1024];
    DWORD units = 0;
    if (!ReadConsoleW(console, part, static_cast<DWORD>(std::size(part)), &units, nullptr) || units == 0) return {};
    line.insert(line.end(), part, part + units);
  } while (line.back() != L'\n');
  return line;
}

/// In pieces that every console takes.
bool WriteToConsole(HANDLE console, std::string_view text) {
  constexpr std::size_t kMostUnits = 8000;
  const std::vector<WCHAR> wide = Wide(CP_UTF8, text);
  DWORD written = 0;
  for (std::size_t position = 0; position < wide.size(); position += written) {
    const DWORD units = static_cast<DWORD>(std::min(wide.size() - position, kMostUnits));
    if (!WriteConsoleW(console, wide.data() + position, units, &written, nullptr) || written == 0) return false;
  }
  return true;
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
  const bool closed = event == CTRL_CLOSE_EVENT;
  const bool asked = closed || event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  if (!asked || interrupted.exchange(true)) return FALSE;
  // The system ends the process when this returns, so it does not: the main thread ends the process before.
  if (closed) Sleep(INFINITE);
  return TRUE;
}

/// Without the C runtime, because OnDebuggerText also runs while the process ends.
void WriteDebuggerText(std::string_view text) {
  if (errorTarget.console) {
    WriteToConsole(errorTarget.console, text);
    return;
  }
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

LONG CALLBACK OnDebuggerText(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  const bool wide = record.ExceptionCode == kWideDebuggerText;
  if (!wide && record.ExceptionCode != kNarrowDebuggerText) return EXCEPTION_CONTINUE_SEARCH;
  const std::size_t length = record.ExceptionInformation[0];
  if (record.NumberParameters >= 2 && length > 1 && length < std::numeric_limits<int>::max()) {
    if (wide) {
      WriteDebuggerText(
          Utf8(reinterpret_cast<const WCHAR*>(record.ExceptionInformation[1]), static_cast<int>(length) - 1));
    } else {
      const std::vector<WCHAR> text =
          Wide(CP_ACP, {reinterpret_cast<const char*>(record.ExceptionInformation[1]), length - 1});
      WriteDebuggerText(Utf8(text.data(), static_cast<int>(text.size())));
    }
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

void PrepareStreams() {
  // Messages and captures come in that way, and text mode would end them at the first byte 1A.
  _setmode(_fileno(stdin), _O_BINARY);
  Prepare(outputTarget);
  Prepare(errorTarget);
}

bool IsTerminal(Stream stream) {
  return TargetOf(stream).obeysSequences;
}

// The C runtime would send a console one byte at a time, which tears UTF-8 apart.
int Write(Stream stream, std::string_view text) {
  const Target& target = TargetOf(stream);
  if (target.console) return WriteToConsole(target.console, text) ? 0 : EIO;
  const bool written =
      std::fwrite(text.data(), 1, text.size(), target.file) == text.size() && std::fflush(target.file) == 0;
  return written ? 0 : errno;
}

// The C runtime knows no EPIPE here; a pipe without a reader leaves EINVAL behind.
bool IsReaderGone(int error) {
  return error == EPIPE || error == EINVAL;
}

TerminalSize GetTerminalSize(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const DWORD handle = stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(handle), &info)) return {};
  return {info.srWindow.Right - info.srWindow.Left + 1, info.srWindow.Bottom - info.srWindow.Top + 1};
}

bool IsInputTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

std::optional<std::string> ReadLine(bool echo) {
  const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
  DWORD before = 0;
  GetConsoleMode(console, &before);
  const DWORD silent = before & ~static_cast<DWORD>(ENABLE_ECHO_INPUT);
  SetConsoleMode(console, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT | (echo ? before : silent));
  const auto line = ReadConsoleLine(console);
  SetConsoleMode(console, before);
  if (!echo) WriteToConsole(errorTarget.console, "\r\n");
  if (!line || Interrupted()) return std::nullopt;
  std::string text = Utf8(line->data(), static_cast<int>(line->size()));
  text.erase(std::min(text.find_first_of("\r\n"), text.size()));
  return text;
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

std::string_view PlatformLibraryFileName() {
  return "TarnDBI.dll";
}

namespace {

std::string ErrorText(DWORD code) {
  WCHAR text[512];
  const DWORD units = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                                     static_cast<DWORD>(std::size(text)), nullptr);
  std::string error = "error " + std::to_string(code) + (units ? ", " + Utf8(text, static_cast<int>(units)) : "");
  error.erase(error.find_last_not_of(" .\r\n") + 1);
  return error;
}

/// With a folder in its path, a library's own libraries are looked for beside it.
HMODULE Load(const std::filesystem::path& file) {
  return LoadLibraryExW(file.c_str(), nullptr, file.has_parent_path() ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
}

/// The platform library as the library `file` finds it; empty where it is not there.
std::filesystem::path PlatformLibraryFor(const std::filesystem::path& file) {
  const std::filesystem::path name(PlatformLibraryFileName());
  std::error_code unknown;
  if (std::filesystem::exists(file.parent_path() / name, unknown)) return file.parent_path() / name;
  return SearchPathW(nullptr, name.c_str(), nullptr, 0, nullptr, nullptr) > 0 ? name : std::filesystem::path();
}

}  // namespace

void* OpenModule(const std::filesystem::path& file, ModuleFailure& failure) {
  if (const HMODULE module = Load(file)) return module;
  const DWORD code = GetLastError();
  failure.reason = ErrorText(code);
  std::error_code unknown;
  if (!std::filesystem::exists(file, unknown)) return nullptr;
  // The system does not name the library that is at fault. Loaded alone, the platform library shows whether it is.
  const std::filesystem::path platformLibrary = PlatformLibraryFor(file);
  if (platformLibrary.empty()) {
    failure.otherMissing = code == ERROR_MOD_NOT_FOUND;
    if (failure.otherMissing) failure.other = PlatformLibraryFileName();
  } else if (const HMODULE whole = Load(platformLibrary)) {
    FreeLibrary(whole);
  } else {
    failure.reason = ErrorText(GetLastError());
    failure.other = Utf8(platformLibrary.c_str(), lstrlenW(platformLibrary.c_str()));
  }
  return nullptr;
}

std::string LoadedModuleFile(const std::string& name) {
  WCHAR path[1024];
  const HMODULE module = GetModuleHandleW(std::filesystem::path(name).c_str());
  const DWORD units = module ? GetModuleFileNameW(module, path, static_cast<DWORD>(std::size(path))) : 0;
  return Utf8(path, static_cast<int>(units));
}

void* FindSymbol(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

namespace {

struct CloseHandleOf {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, CloseHandleOf>;

/// "NAME=value" texts, each with a NUL behind it, and one more NUL.
std::vector<WCHAR> EnvironmentBlock(const std::vector<std::string>& variables) {
  std::vector<WCHAR> block;
  for (const std::string& variable : variables) {
    const std::vector<WCHAR> wide = Wide(CP_UTF8, variable);
    block.insert(block.end(), wide.begin(), wide.end());
    block.push_back(L'\0');
  }
  WCHAR* const own = GetEnvironmentStringsW();
  for (const WCHAR* variable = own; *variable; variable += lstrlenW(variable) + 1)
    block.insert(block.end(), variable, variable + lstrlenW(variable) + 1);
  FreeEnvironmentStringsW(own);
  block.push_back(L'\0');
  return block;
}

}  // namespace

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& variables,
                         const std::string& input) {
  const auto failed = [] { return ProgramResult{0, ErrorText(GetLastError())}; };
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  HANDLE read = nullptr;
  HANDLE write = nullptr;
  // With room for all of it, so that a program that does not read holds nobody up.
  if (!CreatePipe(&read, &write, &inherited, static_cast<DWORD>(input.size()) + 1)) return failed();
  const OwnedHandle reader(read);
  OwnedHandle writer(write);
  SetHandleInformation(write, HANDLE_FLAG_INHERIT, 0);
  DWORD written = 0;
  if (!WriteFile(write, input.data(), static_cast<DWORD>(input.size()), &written, nullptr)) return failed();
  writer.reset();

  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = read;
  startup.hStdOutput = GetStdHandle(STD_ERROR_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  std::vector<WCHAR> commandLine = Wide(CP_UTF8, '"' + program + '"');
  commandLine.push_back(L'\0');
  std::vector<WCHAR> environment = EnvironmentBlock(variables);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                      environment.data(), nullptr, &startup, &process))
    return failed();
  const OwnedHandle processHandle(process.hProcess);
  const OwnedHandle threadHandle(process.hThread);
  DWORD exitCode = 0;
  if (WaitForSingleObject(process.hProcess, INFINITE) != WAIT_OBJECT_0 ||
      !GetExitCodeProcess(process.hProcess, &exitCode))
    return failed();
  return {static_cast<int>(exitCode), ""};
}

std::string OpenInBrowser(const std::string& address) {
  std::vector<WCHAR> wide = Wide(CP_UTF8, address);
  wide.push_back(L'\0');
  // A value above 32 means success.
  const auto code =
      reinterpret_cast<std::intptr_t>(ShellExecuteW(nullptr, L"open", wide.data(), nullptr, nullptr, SW_SHOWNORMAL));
  return code > 32 ? "" : ErrorText(GetLastError());
}

// Here a port is free again at once, but another program could share it.
void PrepareListener(std::uintptr_t socket) {
  const BOOL yes = TRUE;
  setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes), sizeof yes);
}

void SetEnvironment(const std::string& name, const std::string& value) {
  _wputenv_s(std::filesystem::path(std::u8string(name.begin(), name.end())).c_str(),
             std::filesystem::path(std::u8string(value.begin(), value.end())).c_str());
}

void ShowDebuggerLines() {
  AddVectoredExceptionHandler(1, OnDebuggerText);
}

}  // namespace tarnfind::platform
