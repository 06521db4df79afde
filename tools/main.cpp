/// tarnfind, the command-line wizard: turns arguments into one command, and what becomes of it into an exit code.
#include <fmt/format.h>

#include <exception>

#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace {

using namespace tarnfind;

/// One line of UTF-8. The tool's own texts are UTF-8 already.
std::string TextOf(const std::exception& error) {
  const std::string text = error.what();
  return OneLine(IsValidUtf8(text) ? text : platform::Utf8FromSystemText(text));
}

int Complain(const std::exception& error, ExitCode code) {
  platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", TextOf(error)));
  return code;
}

/// In JSON the reader of the output learns of the failure too.
int Fail(const std::exception& error, const Options& options, TextOutput& output) {
  if (options.json) output.Write(JsonLine({{"event", "error"}, {"error", TextOf(error)}}));
  return Complain(error, kFailed);
}

int Run(const CommandLine& commandLine, TextOutput& output) {
  if (commandLine.options.debugOutput) platform::ShowDebuggerLines();
  try {
    commandLine.run(commandLine.options, output);
    return kDone;
  } catch (const WrongUse&) {
    throw;
  } catch (const std::exception& error) {
    return Fail(error, commandLine.options, output);
  }
}

}  // namespace

int main(int argc, char** argv) {
  platform::PrepareStreams();
  StandardOutput output;
  try {
    const CommandLine commandLine = ParseCommandLine(platform::Utf8Arguments(argc, argv));
    if (commandLine.run) return Run(commandLine, output);
    output.Write(commandLine.help);
    return kDone;
  } catch (const ReaderGone&) {
    return kDone;
  } catch (const WrongUse& error) {
    return Complain(error, kWrongUse);
  } catch (const std::exception& error) {
    return Complain(error, kFailed);
  }
}
