#include "tools/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "commit.h"
#include "tools/arguments.h"
#include "tools/capture_commands.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

void DefineNothing(CLI::App&, Options&) {}

void DefineReceiving(CLI::App& command, Options& options, const char* seconds) {
  command.add_option("--for", options.seconds, seconds)->type_name("SECONDS")->check(CheckSeconds);
  command.add_option("--pictures", options.pictures, "Keep received pictures in this folder")
      ->type_name("FOLDER")
      ->check(CheckText);
}

void DefineSearch(CLI::App& command, Options& options) {
  DefineReceiving(command, options, "How long to search (5)");
}

void DefineInfo(CLI::App& command, Options& options) {
  command.add_option("IP", options.ip, "Address to look at")->required()->type_name("")->check(CheckIpAddress);
  DefineReceiving(command, options, "How long to wait for the camera (2)");
}

void DefineMac(CLI::App& command, Options& options) {
  command.add_option("MAC", options.mac, "Hardware address of the camera")
      ->required()
      ->type_name("")
      ->transform(CLI::Validator(NormaliseMac, ""));
}

void DefineSetNetwork(CLI::App& command, Options& options) {
  DefineMac(command, options);
  command.add_option("--ip", options.newIp, "New IP address")->type_name("IP")->check(CheckIpAddress);
  command.add_option("--mask", options.newMask, "New subnet mask")->type_name("MASK")->check(CheckSubnetMask);
  command.add_option("--gateway", options.newGateway, "New gateway")->type_name("IP")->check(CheckIpAddress);
  CLI::Option* const dhcp = command.add_flag_callback(
      "--dhcp", [&options] { options.newDhcp = true; }, "Take the address from DHCP");
  command
      .add_flag_callback(
          "--static", [&options] { options.newDhcp = false; }, "Keep a fixed address")
      ->excludes(dhcp);
  command.add_option("--user", options.newUser, "User name for the camera")->type_name("NAME")->check(CheckText);
  command.add_option("--password", options.newPassword, "Password for the camera")->type_name("TEXT")->check(CheckText);
  command.add_option("--type", options.networkCommandType, "Type of the network command (1)")
      ->type_name("1|4")
      ->check([](const std::string& text) { return text == "1" || text == "4" ? "" : "must be 1 or 4"; });
}

struct Command {
  const char* name;
  const char* purpose;
  void (*define)(CLI::App& command, Options& options);
  void (*run)(const Options& options, TextOutput& output);
  const char* examples;
};
constexpr Command kCommands[] = {
    {"search", "Show cameras as the server finds them", DefineSearch, RunSearch,
     "  tarnfind search\n"
     "  tarnfind search --for 30 --pictures pictures\n"
     "  tarnfind search --for 10 --json > found.jsonl\n"},
    {"list", "List the cameras found so far", DefineNothing, RunList,
     "  tarnfind list\n"
     "  tarnfind list --json\n"},
    {"info", "Ask about the camera at one IP address", DefineInfo, RunInfo,
     "  tarnfind info 192.168.0.9\n"
     "  tarnfind info 192.168.0.9 --for 10 --json\n"},
    {"send-mac", "Tell the server a hardware address", DefineMac, RunSendMac,
     "  tarnfind send-mac 00:40:8C:12:34:56\n"},
    {"bare", "Send the command that carries nothing", DefineNothing, RunBare, "  tarnfind bare\n"},
    {"set-network", "Change a camera's network settings", DefineSetNetwork, RunSetNetwork,
     "  tarnfind set-network 00:40:8C:12:34:56 --dhcp\n"
     "  tarnfind set-network 00:40:8C:12:34:56 --ip 192.168.0.9 --mask 255.255.255.0 --gateway 192.168.0.1 --static\n"
     "  tarnfind set-network 00:40:8C:12:34:56 --static --user operator --password secret --type 4\n"},
    {"decode", "Show a message of the conversation, byte by byte if need be", DefineDecode, RunDecode,
     "  tarnfind decode reply.bin\n"
     "  tarnfind decode --as block-3 --hex block.bin\n"
     "  tarnfind decode --json request.bin > request.json\n"},
    {"encode", "Make the bytes of a message from the JSON of decode", DefineEncode, RunEncode,
     "  tarnfind encode request.json > request.bin\n"},
};

constexpr char kGeneralExamples[] =
    "  tarnfind search --for 30\n"
    "  tarnfind list --json\n"
    "  tarnfind set-network --help\n";
constexpr char kExitCodes[] = "\nExit code: 0 done, 1 the operation failed, 2 wrong use.";

/// The same options before and behind the command's name.
void DefineCommon(CLI::App& app, Options& options) {
  app.set_help_flag("-h,--help", "Print this help");
  for (CLI::Option* const option : {
           app.get_help_ptr(),
           app.add_flag("--json", options.json, "Print one JSON object per line"),
           app.add_flag("--show-passwords", options.showPasswords, "Print passwords instead of ********"),
           app.add_flag("--debug-output", options.debugOutput, "Show the library's debugger lines on standard error"),
           app.add_option("--library", options.library, "File of the library, if not beside the program")
               ->type_name("PATH")
               ->check(CheckText),
       })
    option->group("Options of every command");
}

/// Of what was not understood only the first word is repeated: the next one could be a password.
std::string Complaint(const CLI::ParseError& error, const CLI::App& app) {
  const std::vector<std::string> extras = app.remaining(true);
  return extras.empty() ? error.what() : fmt::format("\"{}\" is not understood", extras.front());
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  CLI::App app("Finds cameras and changes their network settings, through the camera finder of a video server.",
               "tarnfind");
  // Arguments such as /tmp/pictures are paths on every system.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "tarnfind " TARN_VERSION " (" TARN_COMMIT ")", "Print the version");
  app.require_subcommand(1);
  app.footer(fmt::format("Examples:\n{}{}", kGeneralExamples, kExitCodes));
  DefineCommon(app, result.options);
  for (const Command& command : kCommands) {
    CLI::App* const sub = app.add_subcommand(command.name, command.purpose);
    command.define(*sub, result.options);
    DefineCommon(*sub, result.options);
    sub->footer(fmt::format("Examples:\n{}{}", command.examples, kExitCodes));
    sub->final_callback([&result, &command] { result.run = command.run; });
  }

  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      const auto used = app.get_subcommands();
      const std::string see = used.empty() ? "tarnfind" : "tarnfind " + used.front()->get_name();
      throw WrongUse(OneLine(fmt::format("{}; see {} --help", Complaint(error, app), see)));
    }
    std::ostringstream help;
    app.exit(error, help, help);
    result.help = help.str();
    result.run = nullptr;
  }
  return result;
}

}  // namespace tarnfind
