/// What differs between operating systems: arguments, the terminal, Ctrl-C, the library's file, debugger lines. One
/// source per system, chosen by the build; nothing else in the tool names a system.
///
/// Text is UTF-8 on both sides of this header.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tarnfind::platform {

/// The program's arguments, its name first.
std::vector<std::string> Utf8Arguments(int count, char** values);

enum class Stream { kOutput, kError };

/// To be called first. A reader of the output that goes away makes writes fail from here on; it does not end the
/// process.
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
/// Of the terminal at standard output; the default where it does not tell.
TerminalSize GetTerminalSize();

/// From here on the first Ctrl-C, or the first request to end, only makes Interrupted() true. A second one ends the
/// process, so that a call that waits for the server for ever can be left.
void CatchInterrupts();
bool Interrupted();

/// Of the running program; empty where the system does not tell.
std::filesystem::path ExecutableFolder();
/// File name of the finder library on this system.
std::string_view LibraryFileName();
/// Null on failure, with the system's reason in `error`. A bare file name is looked for where the system looks.
void* OpenModule(const std::filesystem::path& file, std::string& error);
/// Null where the module has no such name.
void* FindSymbol(void* module, const char* name);

/// UTF-8 of a text in the system's code page, which is what the library's exceptions carry. What cannot be converted
/// stays as it is.
std::string Utf8FromSystemText(const std::string& text);

/// Makes the library's debugger lines appear on standard error. Requires that the library is not loaded yet.
void ShowDebuggerLines();

}  // namespace tarnfind::platform
