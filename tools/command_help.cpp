#include "tools/command_help.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <vector>

#include "base/nearest_word.h"
#include "tools/columns.h"
#include "tools/failure.h"

namespace tarnfind {

namespace {

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& app) {
  return app.get_options([](const CLI::Option*) { return true; });
}

/// "--for"; empty for an argument that has no name.
std::string LongName(const CLI::Option& option) {
  return option.get_lnames().empty() ? "" : "--" + option.get_lnames().front();
}

std::vector<std::string> LongNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : OptionsOf(app))
    if (const std::string name = LongName(*option); !name.empty()) names.push_back(name);
  return names;
}

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : CommandsOf(app)) names.push_back(command->get_name());
  return names;
}

bool TakesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

/// What the value of an option, or an argument, is called: "COLUMN", "check|run", "CAPTURE".
std::string KindOf(const CLI::Option& option) {
  return option.get_type_name().empty() ? option.get_name() : option.get_type_name();
}

/// The words of an option or argument that takes one of a few: "check run" of "check|run".
std::string ChoicesOf(const CLI::Option& option, const CLI::App& app) {
  std::string words = KindOf(option);
  if (words == "COLUMN") words = ColumnNames();
  if (words == "COMMAND") return fmt::format("{}", fmt::join(CommandNames(app), " "));
  if (words.find_first_of("|,") == std::string::npos) return {};
  std::erase(words, ',');
  std::replace(words.begin(), words.end(), '|', ' ');
  return words;
}

/// Values that are names of files or folders.
constexpr std::string_view kFiles[] = {"FILE",     "FOLDER", "PATH",  "PROGRAM", "CAPTURE",
                                       "REDACTED", "BEFORE", "AFTER", "LINES"};

bool IsFile(const CLI::Option& option) {
  return std::ranges::find(kFiles, KindOf(option)) != std::end(kFiles);
}

/// "--output|-o|--report": the options whose value is a file, each once.
std::string FileOptions(const CLI::App& app) {
  std::vector<const CLI::App*> apps = CommandsOf(app);
  apps.push_back(&app);
  std::set<std::string> names;
  for (const CLI::App* const each : apps)
    for (const CLI::Option* const option : OptionsOf(*each)) {
      if (!IsFile(*option)) continue;
      for (const std::string& name : option->get_lnames()) names.insert("--" + name);
      for (const std::string& name : option->get_snames()) names.insert("-" + name);
    }
  return fmt::format("{}", fmt::join(names, "|"));
}

/// Each of the characters gets `escape` before it.
std::string Escaped(const std::string& text, std::string_view characters, std::string_view escape) {
  std::string result;
  for (const char c : text) {
    if (characters.find(c) != std::string_view::npos) result += escape;
    result += c;
  }
  return result;
}

/// Within single quotes of a shell.
std::string ShellText(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result;
}

/// ":COLUMN:(mac ip)", ":FILE:_files", or ":SECONDS: " where nothing can be offered.
std::string ZshValue(const CLI::Option& option, const CLI::App& app) {
  const std::string choices = ChoicesOf(option, app);
  return fmt::format(":{}:{}", KindOf(option),
                     !choices.empty() ? '(' + choices + ')'
                     : IsFile(option) ? "_files"
                                      : " ");
}

/// Options and arguments of a command, each a line.
std::string ZshOptions(const CLI::App& command, const CLI::App& app) {
  std::string lines;
  int position = 0;
  for (const CLI::Option* const option : OptionsOf(command)) {
    if (const std::string name = LongName(*option); name.empty()) {
      lines += fmt::format("      '{}{}' \\\n", ++position, ZshValue(*option, app));
    } else {
      const bool again = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
      lines += fmt::format("      '{}{}[{}]{}' \\\n", again ? "*" : "", name,
                           Escaped(ShellText(option->get_description()), "[]:", "\\"),
                           TakesValue(*option) ? ZshValue(*option, app) : "");
    }
  }
  return lines;
}

/// A line may not begin with a control character of roff, and an unescaped "-" would become a hyphen.
std::string Roff(const std::string& text) {
  std::string result = Escaped(text, "\\", "\\");
  std::string escaped;
  for (const char c : result) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
  return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

std::string ManualOptions(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* const option : OptionsOf(app)) {
    const std::string name = LongName(*option);
    const std::string value = TakesValue(*option) && !name.empty() ? ' ' + option->get_type_name() : "";
    text += fmt::format(".TP\n.B {}{}\n{}\n", Roff(name.empty() ? option->get_name() : name), Roff(value),
                        Roff(option->get_description()));
  }
  return text;
}

std::string ManualFooter(const std::string& footer) {
  std::string text = ".PP\n.nf\n";
  for (std::size_t begin = 0; begin < footer.size();) {
    const std::size_t end = std::min(footer.find('\n', begin), footer.size());
    text += Roff(footer.substr(begin, end - begin)) + '\n';
    begin = end + 1;
  }
  return text + ".fi\n";
}

}  // namespace

std::string BashCompletion(const CLI::App& app) {
  std::string cases;
  for (const CLI::App* const command : CommandsOf(app)) {
    std::string words = fmt::format("{}", fmt::join(LongNames(*command), " "));
    for (const CLI::Option* const option : OptionsOf(*command))
      if (LongName(*option).empty()) words += ' ' + ChoicesOf(*option, app);
    cases += fmt::format("    {}) words='{}' ;;\n", command->get_name(), words);
  }
  std::string columns = ColumnNames();
  std::erase(columns, ',');
  return fmt::format(R"(# Completion of tarnfind for bash. Use: source <(tarnfind completion bash)
_tarnfind() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} word words command=
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    [[ $word == -* ]] || {{ command=$word; break; }}
  done
  case $command in
{}    *) words='{} {}' ;;
  esac
  case $previous in
    --sort) words='{}' ;;
    {}) return ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
}}
complete -o default -F _tarnfind tarnfind
)",
                     cases, fmt::join(CommandNames(app), " "), fmt::join(LongNames(app), " "), columns,
                     FileOptions(app));
}

std::string ZshCompletion(const CLI::App& app) {
  std::string commands;
  std::string cases;
  for (const CLI::App* const command : CommandsOf(app)) {
    commands +=
        fmt::format("    '{}:{}'\n", command->get_name(), Escaped(ShellText(command->get_description()), ":", "\\"));
    cases +=
        fmt::format("    {}) _arguments \\\n{}      && return ;;\n", command->get_name(), ZshOptions(*command, app));
  }
  return fmt::format(R"(#compdef tarnfind
# Completion of tarnfind for zsh. Use: tarnfind completion zsh > FOLDER/_tarnfind, with a FOLDER of $fpath
_tarnfind() {{
  local -a commands=(
{}  )
  local state
  _arguments -C \
{}      '1:command:->command' '*::argument:->argument'
  case $state in
  command) _describe command commands ;;
  argument) case $words[1] in
{}    esac ;;
  esac
}}
_tarnfind "$@"
)",
                     commands, ZshOptions(app, app), cases);
}

std::string ManualPage(const CLI::App& app) {
  std::string text = fmt::format(
      ".TH TARNFIND 1\n.SH NAME\ntarnfind \\- find cameras and change their network settings\n.SH SYNOPSIS\n"
      ".B tarnfind\n.I COMMAND\n[OPTION...]\n.SH DESCRIPTION\n{}\n.SH COMMANDS\n",
      Roff(app.get_description()));
  for (const CLI::App* const command : CommandsOf(app))
    text += fmt::format(".SS {}\n{}.\n{}{}", Roff(command->get_name()), Roff(command->get_description()),
                        ManualOptions(*command), ManualFooter(command->get_footer()));
  text += ".SH EXIT STATUS\n";
  for (const ExitCodeRow& row : kExitCodes)
    text += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(row.code), Roff(row.meaning));
  return text;
}

std::string DidYouMean(const std::string& word, const CLI::App& app, const CLI::App* command) {
  const bool isOption = word.starts_with('-');
  if (!isOption && command) return {};
  const std::vector<std::string> names = isOption ? LongNames(command ? *command : app) : CommandNames(app);
  const std::string_view nearest =
      Kestrel::NearestWord(word, std::vector<std::string_view>(names.begin(), names.end()));
  return nearest.empty() ? "" : fmt::format("; did you mean {}", nearest);
}

}  // namespace tarnfind
