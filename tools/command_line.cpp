#include "tools/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "commit.h"
#include "tools/arguments.h"
#include "tools/capture_commands.h"
#include "tools/columns.h"
#include "tools/command_help.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

CLI::Option* AddSeconds(CLI::App& command, Options& options, const char* purpose) {
  return command.add_option("--for", options.seconds, purpose)->type_name("SECONDS")->check(CheckSeconds);
}

void AddPictures(CLI::App& command, Options& options) {
  command.add_option("--pictures", options.pictures.path, "Keep received pictures in this folder")
      ->type_name("FOLDER")
      ->check(CheckText);
}

/// How cameras are shown on a terminal.
void AddForm(CLI::App& command, Options& options) {
  command
      .add_option_function<std::string>(
          "--sort", [&options](const std::string& name) { options.sort = FindColumn(name); },
          "Order of the cameras: a column")
      ->type_name("COLUMN")
      ->check([](const std::string& name) {
        return FindColumn(name) ? "" : fmt::format("must be one of {}", ColumnNames());
      });
  command.add_flag("--csv", options.csv, "Print comma-separated values, a line for each camera");
}

/// Which cameras are shown, and what must be there.
void AddChoice(CLI::App& command, Options& options) {
  command
      .add_option_function<std::vector<std::string>>(
          "--filter",
          [&options](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) options.filters.push_back(FilterOf(text));
          },
          "Only cameras with this text in any column, or in one: COLUMN=TEXT")
      ->type_name("TEXT")
      ->expected(1)
      ->take_all()
      ->check([](const std::string& text) -> std::string {
        try {
          FilterOf(text);
          return {};
        } catch (const WrongUse& error) {
          return error.what();
        }
      });
  command.add_option("--expect", options.expectedCount, "Exit code 4 unless there are so many cameras or more")
      ->type_name("NUMBER")
      ->check(CheckCount);
  command.add_option("--expect-mac", options.expectedMacs, "Exit code 4 unless this camera is there")
      ->type_name("MAC")
      ->expected(1)
      ->take_all()
      ->transform(CLI::Validator(NormaliseMac, ""));
}

void AddSearching(CLI::App& command, Options& options, const char* seconds) {
  CLI::Option* const time = AddSeconds(command, options, seconds);
  command.add_flag("--watch", options.watch, "Until Ctrl-C")->excludes(time);
  AddPictures(command, options);
  AddChoice(command, options);
  command
      .add_option(
          "--exec", options.program,
          "Run this program for each event: its JSON on standard input, TARN_MAC, TARN_IP ... in the environment")
      ->type_name("PROGRAM")
      ->check(CheckText);
}

void AddMac(CLI::App& command, std::string& mac) {
  command.add_option("MAC", mac, "Hardware address of the camera")
      ->type_name("")
      ->transform(CLI::Validator(NormaliseMac, ""));
}

/// --known and --new.
std::pair<CLI::Option*, CLI::Option*> AddKnown(CLI::App& command, Options& options) {
  const auto addKnown = [&](const char* name, bool listed, const char* purpose) {
    return command.add_flag_callback(
        name,
        [&options, listed] {
          options.filters.push_back([listed](const FoundCamera& found) { return found.listed == listed; });
        },
        purpose);
  };
  CLI::Option* const known = addKnown("--known", true, "Only cameras that the server knew before");
  CLI::Option* const fresh = addKnown("--new", false, "Only cameras that it did not know")->excludes(known);
  return {known, fresh};
}

void DefineSearch(CLI::App& command, Options& options) {
  AddSearching(command, options, "How long to search (5)");
  AddForm(command, options);
  const auto [known, fresh] = AddKnown(command, options);
  CLI::Option* const against =
      command
          .add_option("--against", options.capture.against,
                      "Show how the cameras differ from those of a capture, or of a search --json; 1: they do")
          ->type_name("FILE")
          ->check(CheckText)
          ->excludes(known)
          ->excludes(fresh);
  command
      .add_option("--report", options.page.report, "Write the page of the search, with its pictures, to one HTML file")
      ->type_name("FILE")
      ->check(CheckText);
  for (const char* const name : {"--csv", "--filter", "--report", "--sort"})
    against->excludes(command.get_option(name));
}

void RunAnySearch(const Options& options, TextOutput& output) {
  if (!options.capture.against.empty()) return RunSearchAgainst(options, output);
  options.page.report.empty() ? RunSearch(options, output) : RunSearchWithReport(options, output);
}

void DefinePage(CLI::App& command, Options& options) {
  AddSearching(command, options, "How long to search; without it until Ctrl-C");
  AddKnown(command, options);
  command.add_option("--port", options.page.port, "Port of the page; without it one that is free")
      ->type_name("PORT")
      ->check(CLI::Range(1024, 65535));
  command.add_flag("--open", options.page.openBrowser, "Open the page in the browser");
  command.add_flag("--once", options.page.once, "End when the last page is closed");
}

void DefineReport(CLI::App& command, Options& options) {
  command.add_option("LINES", options.page.lines, "File of the lines of search --json")
      ->required()
      ->type_name("")
      ->check(CheckText);
  command.add_option("--pictures", options.pictures.path, "Folder of the pictures that the lines name")
      ->type_name("FOLDER")
      ->check(CheckText);
  command.add_option("-o,--output", options.page.report, "The HTML file to write")
      ->required()
      ->type_name("FILE")
      ->check(CheckText);
}

void DefineList(CLI::App& command, Options& options) {
  AddForm(command, options);
  AddChoice(command, options);
}

void DefineInfo(CLI::App& command, Options& options) {
  command
      .add_option_function<std::string>(
          "ADDRESS",
          [&options](const std::string& address) { (ParseIpAddress(address) ? options.ip : options.mac) = address; },
          "IP or hardware address of the camera")
      ->required()
      ->type_name("")
      ->transform(CLI::Validator(NormaliseAddress, ""));
  AddSeconds(command, options, "How long to wait for the camera (2)");
}

void DefineSendMac(CLI::App& command, Options& options) {
  AddMac(command, options.mac);
  command.get_option("MAC")->required();
  AddSearching(command, options, "How long to wait for answers (2)");
  AddForm(command, options);
}

void DefineBare(CLI::App& command, Options& options) {
  AddSearching(command, options, "How long to wait for answers (2)");
  AddForm(command, options);
}

void DefineCheck(CLI::App& command, Options& options) {
  AddSeconds(command, options, "How long to wait for an answer (2)");
}

void DefineSetNetwork(CLI::App& command, Options& options) {
  NetworkChange& change = options.change;
  AddMac(command, change.mac);
  command.add_option("--ip", change.ip, "New IP address")->type_name("IP")->check(CheckIpAddress);
  command.add_option("--mask", change.mask, "New subnet mask")->type_name("MASK")->check(CheckSubnetMask);
  command.add_option("--gateway", change.gateway, "New gateway")->type_name("IP")->check(CheckIpAddress);
  CLI::Option* const dhcp = command.add_flag_callback(
      "--dhcp", [&change] { change.dhcp = true; }, "Take the address from DHCP");
  command
      .add_flag_callback(
          "--static", [&change] { change.dhcp = false; }, "Keep a fixed address")
      ->excludes(dhcp);
  command.add_option("--user", change.user, "User name for the camera")->type_name("NAME")->check(CheckText);
  CLI::Option* const password =
      command
          .add_option("--password", change.password, "Password for the camera; others may see it in the process list")
          ->type_name("TEXT")
          ->check(CheckText);
  CLI::Option* const file = command
                                .add_option("--password-file", options.passwordFile,
                                            "Read the password from the first line of this file; -: standard input")
                                ->type_name("FILE")
                                ->check(CheckText)
                                ->excludes(password);
  command.add_flag("--ask-password", options.askPassword, "Ask for the password")->excludes(password)->excludes(file);
  command.add_option("--from", options.batchFile, "Change the cameras of this file of comma-separated values")
      ->type_name("FILE")
      ->check(CheckText);
  command.add_option("--remaining", options.remainingFile, "Write the lines of --from that are still to be done")
      ->type_name("FILE")
      ->check(CheckText);
  command.add_flag("--yes", options.yes, "Send without a question");
  command.add_flag("--force", options.force, "Send also what is unusual, such as a gateway outside the network");
  AddSeconds(command, options, "How long to read back (5)");
  command.add_option("--type", options.networkCommandType, "Type of the network command (1)")
      ->type_name("1|4")
      ->check([](const std::string& text) { return text == "1" || text == "4" ? "" : "must be 1 or 4"; });
}

void DefineScenario(CLI::App& command, Options& options) {
  command
      .add_option_function<std::string>(
          "ACTION", [&options](const std::string& action) { options.playScenario = action == "run"; }, "What to do")
      ->required()
      ->type_name("check|run")
      ->check(
          [](const std::string& action) { return action == "check" || action == "run" ? "" : "must be check or run"; });
  command.add_option("FILE", options.scenarioFile, "File of the scenario")->required()->type_name("")->check(CheckText);
  AddSearching(command, options, "How long to search (5)");
  AddForm(command, options);
}

struct Command {
  const char* name;
  const char* purpose;
  void (*define)(CLI::App& command, Options& options);
  void (*run)(const Options& options, TextOutput& output);
  const char* examples;
};
constexpr Command kCommands[] = {
    {"search", "Show the cameras that the server knows, and those that it finds", DefineSearch, RunAnySearch,
     "  tarnfind search\n"
     "  tarnfind search --for 30 --pictures pictures --sort ip\n"
     "  tarnfind search --watch --new --exec ./on-new-camera\n"
     "  tarnfind search --for 10 --json > monday.jsonl\n"
     "  tarnfind search --for 10 --against monday.jsonl\n"
     "  tarnfind search --report cameras.html\n"},
    {"page", "Show a search in the browser", DefinePage, RunPage,
     "  tarnfind page --open --once\n"
     "  tarnfind page --for 30 --pictures pictures --new\n"},
    {"report", "Write a search as one HTML file with its pictures", DefineReport, RunReport,
     "  tarnfind report monday.jsonl -o monday.html\n"
     "  tarnfind report monday.jsonl --pictures pictures -o monday.html\n"},
    {"list", "List the cameras that the server knows", DefineList, RunList,
     "  tarnfind list --filter vendor=north --sort ip\n"
     "  tarnfind list --csv > cameras.csv\n"
     "  tarnfind list --expect 12 --expect-mac 00:40:8C:12:34:56\n"},
    {"info", "Ask about the camera at one address", DefineInfo, RunInfo,
     "  tarnfind info 192.168.0.9\n"
     "  tarnfind info 00408c123456 --for 10 --json\n"},
    {"check", "See how far the way to the server goes", DefineCheck, RunCheck, "  tarnfind check\n"},
    {"set-network", "Change the network settings of cameras", DefineSetNetwork, RunSetNetwork,
     "  tarnfind set-network 00:40:8C:12:34:56 --dhcp\n"
     "  tarnfind set-network 00:40:8C:12:34:56 --ip 192.168.0.9 --mask 255.255.255.0 --gateway 192.168.0.1 --static\n"
     "  tarnfind set-network 00:40:8C:12:34:56 --user operator --ask-password\n"
     "  tarnfind set-network --from cameras.csv --yes --remaining again.csv\n"},
    {"scenario", "Check a scenario of the simulator, or search against it", DefineScenario, RunScenario,
     "  tarnfind scenario check two.json\n"
     "  tarnfind scenario run two.json --for 2\n"},
    {"send-mac", "Tell the server a hardware address, and show what it answers", DefineSendMac, RunSendMac,
     "  tarnfind send-mac 00:40:8C:12:34:56\n"},
    {"bare", "Send the command that carries nothing, and show what the server answers", DefineBare, RunBare,
     "  tarnfind bare --for 10\n"},
    {"decode", "Show a message of the conversation, byte by byte if need be", DefineDecode, RunDecode,
     "  tarnfind decode reply.bin\n"
     "  tarnfind decode --as block-3 --hex block.bin\n"
     "  tarnfind decode --json request.bin > request.json\n"},
    {"encode", "Make the bytes of a message from the JSON of decode", DefineEncode, RunEncode,
     "  tarnfind encode request.json > request.bin\n"},
    {"show", "Show a recorded conversation, a line for each call and block", DefineShow, RunShow,
     "  tarnfind show case.pcapng\n"
     "  tarnfind show case.pcapng --follow --filter mac=00:40:8C:12:34:56\n"},
    {"stats", "Count the calls and blocks of a recorded conversation", DefineStats, RunStats,
     "  tarnfind stats case.pcapng\n"},
    {"redact", "Take credentials out of a recorded conversation", DefineRedact, RunRedact,
     "  tarnfind redact case.pcapng clean.pcapng\n"},
    {"explain", "Tell where a camera is, by a recorded conversation", DefineExplain, RunExplain,
     "  tarnfind explain 00:40:8C:12:34:56 case.pcapng\n"
     "  tarnfind explain 192.168.0.9 case.pcapng --json\n"},
    {"diff", "Compare the cameras of two captures or searches; 1: they differ", DefineDiff, RunDiff,
     "  tarnfind diff monday.pcapng tuesday.pcapng\n"
     "  tarnfind diff before.jsonl after.jsonl --json\n"},
};

constexpr char kGeneralExamples[] =
    "  tarnfind search --for 30\n"
    "  tarnfind list --json\n"
    "  tarnfind check\n"
    "  tarnfind set-network --help\n";
std::string ExitCodes() {
  std::string text;
  for (const ExitCodeRow& row : kExitCodes)
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", static_cast<int>(row.code), row.meaning);
  return "\nExit code: " + text + ".";
}

/// Options that stand before or behind the command's name.
void DefineCommon(CLI::App& app, Options& options) {
  app.set_help_flag("-h,--help", "Print this help");
  for (CLI::Option* const option : {
           app.get_help_ptr(),
           app.add_flag("--json", options.json, "Print one JSON object per line"),
           app.add_flag("--times", options.times, "Print the time of each event"),
           app.add_flag("--show-passwords", options.showPasswords, "Print passwords instead of ********"),
           app.add_flag("--debug-output", options.debugOutput, "Show the library's debugger lines on standard error"),
           app.add_option("--library", options.library, "File of the library, if not beside the program")
               ->type_name("PATH")
               ->check(CheckText),
       })
    option->group("Options of every command");
}

/// Repeats only the first word that was not understood, because the next one could be a password.
std::string Complaint(const CLI::ParseError& error, const CLI::App& app, const CLI::App* command) {
  const std::vector<std::string> extras = app.remaining(true);
  if (!extras.empty())
    return fmt::format("\"{}\" is not understood{}", extras.front(), DidYouMean(extras.front(), app, command));
  return error.get_name() == "RequiredError" && !command ? "a command is missing" : error.what();
}

/// Throws where --json meets an option that has no effect with it; it may stand before the command's name too.
void CheckPrinting(const Options& options, const CLI::App& command) {
  if (!options.json) return;
  if (options.csv) throw CLI::ExcludesError("--csv", "--json");
  const bool printsEvents = command.get_option_no_throw("--exec");  // as they arrive, not sorted
  if (options.sort && printsEvents) throw CLI::ExcludesError("--sort", "--json");
}

/// Commands that print what is made from the table of the others.
void DefinePrinting(CLI::App& app, std::string& printed) {
  CLI::App* const help = app.add_subcommand("help", "Print the help of a command");
  help->add_option_function<std::string>(
          "COMMAND",
          [&app, &printed](const std::string& name) {
            const auto found = app.get_subcommands([&](CLI::App* command) { return command->get_name() == name; });
            if (found.empty())
              throw WrongUse(
                  OneLine(fmt::format("there is no command \"{}\"{}", name, DidYouMean(name, app, nullptr))));
            printed = found.front()->help("tarnfind");
          },
          "The command; all of them where none is given")
      ->type_name("");
  help->final_callback([&app, &printed] {
    // Not app.help(), because that prints the help of the parsed command, which is "help" itself.
    if (printed.empty()) printed = app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
  });

  CLI::App* const completion = app.add_subcommand("completion", "Print a completion script for a shell");
  completion
      ->add_option_function<std::string>(
          "SHELL",
          [&app, &printed](const std::string& shell) {
            printed = shell == "bash" ? BashCompletion(app) : ZshCompletion(app);
          },
          "Whose")
      ->required()
      ->type_name("bash|zsh")
      ->check([](const std::string& shell) { return shell == "bash" || shell == "zsh" ? "" : "must be bash or zsh"; });
  app.add_subcommand("man", "Print the manual page")->final_callback([&app, &printed] { printed = ManualPage(app); });
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
  app.footer(fmt::format("Examples:\n{}{}", kGeneralExamples, ExitCodes()));
  DefineCommon(app, result.options);
  for (const Command& command : kCommands) {
    CLI::App* const sub = app.add_subcommand(command.name, command.purpose);
    DefineCommon(*sub, result.options);
    command.define(*sub, result.options);
    sub->footer(fmt::format("Examples:\n{}{}", command.examples, ExitCodes()));
    sub->final_callback([&result, &command] { result.run = command.run; });
  }

  DefinePrinting(app, result.help);

  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
    CheckPrinting(result.options, *app.get_subcommands().front());
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      const auto used = app.get_subcommands();
      const CLI::App* const command = used.empty() ? nullptr : used.front();
      const std::string see = command ? "tarnfind " + command->get_name() : "tarnfind";
      throw WrongUse(OneLine(fmt::format("{}; see {} --help", Complaint(error, app, command), see)));
    }
    std::ostringstream help;
    app.exit(error, help, help);
    result.help = help.str();
    result.run = nullptr;
  }
  return result;
}

}  // namespace tarnfind
