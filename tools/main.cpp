/// tarnfind, the command-line wizard: turns arguments into one command, and what becomes of it into an exit code.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <nlohmann/json.hpp>

#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/finder_thread.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace {

using namespace tarnfind;

int Complain(const std::string& text, ExitCode code) {
  platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", text));
  return code;
}

/// In JSON the reader of the output learns of the failure too.
int Fail(const std::string& text, ExitCode code, const std::string& step, bool json, TextOutput& output) {
  Complain(text, code);
  if (!json) return code;
  Json object = {{"event", "error"}, {"error", text}, {"exitCode", static_cast<int>(code)}};
  if (!step.empty()) object["step"] = step;
  try {
    output.Write(JsonLine(object));
  } catch (...) {  // the output is gone too; standard error has the line
  }
  return code;
}

int Run(const CommandLine& commandLine, TextOutput& output) {
  if (commandLine.options.debugOutput) platform::ShowDebuggerLines();
  const bool json = commandLine.options.json;
  try {
    commandLine.run(commandLine.options, output);
    return kDone;
  } catch (const CommandError& error) {
    return Fail(ErrorText(error), error.Code(), error.Step(), json, output);
  } catch (const std::exception& error) {
    return Fail(ErrorText(error), kFailed, {}, json, output);
  }
}

int RunProgram(int argc, char** argv) {
  StandardOutput output;
  const std::vector<std::string> arguments = platform::Utf8Arguments(argc, argv);
  try {
    const CommandLine commandLine = ParseCommandLine(arguments);
    if (commandLine.run) return Run(commandLine, output);
    output.Write(commandLine.help);
    return kDone;
  } catch (const ReaderGone&) {
    return kDone;
  } catch (const CommandError& error) {
    const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    return Fail(ErrorText(error), error.Code(), {}, json, output);
  } catch (const std::exception& error) {
    return Complain(ErrorText(error), kFailed);
  }
}

}  // namespace

int main(int argc, char** argv) {
  platform::PrepareStreams();
  const int code = RunProgram(argc, argv);
  if (FinderThread::AnyLeftBehind()) std::_Exit(code);  // everything written is on its way already
  return code;
}
