#include "tools/capture_commands.h"

#include "tools/arguments.h"
#include "tools/capture/event_filter.h"
#include "tools/decode/input.h"

namespace tarnfind {
namespace {

void AddFile(CLI::App& command, Options& options, const char* purpose) {
  command.add_option("FILE", options.capture.file, purpose)->type_name("")->check(CheckText);
}

void AddRequiredFile(CLI::App& command, const char* name, std::string& file, const char* purpose) {
  command.add_option(name, file, purpose)->required()->type_name("")->check(CheckText);
}

}  // namespace

void DefineDecode(CLI::App& command, Options& options) {
  AddFile(command, options, "File of the message; - or nothing: standard input");
  command
      .add_option("--as", options.capture.form, "What it is: request, reply, block, block-1 to block-8, list, frame")
      ->type_name("FORM")
      ->check(CheckForm);
  command.add_flag("--hex", options.capture.hex, "Print each byte with its meaning, passwords too");
}

void DefineEncode(CLI::App& command, Options& options) {
  AddFile(command, options, "File of the JSON; - or nothing: standard input");
  command.add_flag("--hex", options.capture.hex, "Print hexadecimal digits instead of the bytes");
}

void DefineShow(CLI::App& command, Options& options) {
  AddRequiredFile(command, "CAPTURE", options.capture.file, "The capture; -: standard input");
  command.add_flag("--follow", options.capture.follow, "Go on as the capture grows, until Ctrl-C");
  command
      .add_option("--filter", options.capture.filters,
                  "Only what matches mac=ADDRESS, ip=ADDRESS, function=NAME or type=NUMBER; several: all of them")
      ->type_name("KEY=VALUE")
      ->expected(1)
      ->take_all()
      ->transform(CLI::Validator(NormaliseEventFilter, ""));
}

void DefineStats(CLI::App& command, Options& options) {
  AddRequiredFile(command, "CAPTURE", options.capture.file, "The capture; -: standard input");
}

void DefineRedact(CLI::App& command, Options& options) {
  AddRequiredFile(command, "CAPTURE", options.capture.file, "The capture");
  AddRequiredFile(command, "REDACTED", options.capture.target, "The file to write");
}

void DefineExplain(CLI::App& command, Options& options) {
  command.add_option("ADDRESS", options.capture.address, "Hardware or IP address of the camera")
      ->required()
      ->type_name("")
      ->transform(CLI::Validator(NormaliseAddress, ""));
  command.add_option("CAPTURE", options.capture.capture, "The capture; else the one that TARN_CAPTURE names")
      ->type_name("")
      ->check(CheckText);
}

void DefineDiff(CLI::App& command, Options& options) {
  AddRequiredFile(command, "BEFORE", options.capture.file, "A capture, or what search --json printed");
  AddRequiredFile(command, "AFTER", options.capture.target, "Another one");
}

}  // namespace tarnfind
