/// What differs between operating systems: arguments, the terminal, Ctrl-C, library files, other programs, debugger
/// lines. One source per system, chosen by the build; nothing else in the tool names a system.
///
/// Text is UTF-8 on both sides of this header.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnfind::platform {

/// The program's arguments, its name first.
std::vector<std::string> Utf8Arguments(int count, char** values);

enum class Stream { kOutput, kError };

/// To be called first. From here on standard input gives its bytes unchanged, and a write fails where the reader of the
/// output has gone; it does not end the process.
void PrepareStreams();
/// Whether the stream is a terminal that obeys control sequences. Requires PrepareStreams.
bool IsTerminal(Stream stream);
/// Writes the text, line ends unchanged; it is on its way when the call returns. 0, or the errno value of a failure.
/// Requires PrepareStreams.
int Write(Stream stream, std::string_view text);
/// Whether a failure of Write says that the reader has gone.
bool IsReaderGone(int error);

struct TerminalSize {
  int columns = 80;
  int rows = 24;
  bool operator==(const TerminalSize&) const = default;
};
/// Of the terminal at the stream; the default where it does not tell.
TerminalSize GetTerminalSize(Stream stream);

/// Whether somebody can be asked at standard input.
bool IsInputTerminal();
/// A line of the terminal at standard input, without its end. echo: whether what is typed is seen. Empty at the end of
/// the input and on Ctrl-C. Requires IsInputTerminal and CatchInterrupts.
std::optional<std::string> ReadLine(bool echo);

/// From here on the first Ctrl-C, the first request to end, or the closing of the terminal only makes Interrupted()
/// true. A second one of the same kind ends the process at once. Windows grants a few seconds after the closing.
void CatchInterrupts();
bool Interrupted();

/// Of the running program; empty where the system does not tell.
std::filesystem::path ExecutableFolder();
/// File name of the finder library on this system.
std::string_view LibraryFileName();
/// File name of the platform library, which the finder library brings along.
std::string_view PlatformLibraryFileName();

struct ModuleFailure {
  std::string reason;         ///< the system's words
  std::string other;          ///< the library that is at fault, which the file needs; empty: the file itself
  bool otherMissing = false;  ///< it is not there
};
/// Null on failure. A bare file name is looked for where the system looks.
void* OpenModule(const std::filesystem::path& file, ModuleFailure& failure);
/// The file that a loaded library was read from; empty where there is no library of that name.
std::string LoadedModuleFile(const std::string& name);
/// Null where the module has no such name.
void* FindSymbol(void* module, const char* name);

struct ProgramResult {
  int exitCode = 0;
  std::string error;  ///< why it could not be run; empty where it ran
};
/// Runs a program without arguments and without a shell, and waits for its end. variables: "NAME=value", beside those
/// of this process. input: what it reads at standard input. What it prints goes to standard error, otherwise it
/// would stand between this process's own lines.
ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& variables,
                         const std::string& input);

/// Shows the address in the user's browser, without a shell, and does not wait for it. Empty, or why that cannot be.
std::string OpenInBrowser(const std::string& address);

/// For a socket that will listen: its port is free again as soon as an earlier run has ended, and no other program can
/// listen there at the same time.
void PrepareListener(std::uintptr_t socket);

/// For this process, and for its libraries with the same C runtime.
void SetEnvironment(const std::string& name, const std::string& value);

/// Makes the library's debugger lines appear on standard error. Requires that the library is not loaded yet.
void ShowDebuggerLines();

}  // namespace tarnfind::platform
