#include "tools/capture_commands.h"

#include "tools/arguments.h"
#include "tools/decode/input.h"

namespace tarnfind {
namespace {

void AddFile(CLI::App& command, Options& options, const char* purpose) {
  command.add_option("FILE", options.capture.file, purpose)->type_name("")->check(CheckText);
}

}  // namespace

void DefineDecode(CLI::App& command, Options& options) {
  AddFile(command, options, "File of the message; - or nothing: standard input");
  command
      .add_option("--as", options.capture.form, "What it is: request, reply, block, block-1 to block-8, list, frame")
      ->type_name("FORM")
      ->check(CheckForm);
  command.add_flag("--hex", options.capture.hex, "Print each byte with its meaning");
}

void DefineEncode(CLI::App& command, Options& options) {
  AddFile(command, options, "File of the JSON; - or nothing: standard input");
  command.add_flag("--hex", options.capture.hex, "Print hexadecimal digits instead of the bytes");
}

}  // namespace tarnfind
