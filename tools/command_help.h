/// What is made from the table of commands and options beside --help: completion for shells, and the manual page.
#pragma once

#include <CLI/App.hpp>
#include <string>

namespace tarnfind {

/// A script for bash; `source <(tarnfind completion bash)`.
std::string BashCompletion(const CLI::App& app);
/// A script for zsh, to stand as _tarnfind in a folder of $fpath.
std::string ZshCompletion(const CLI::App& app);
/// In the form of man(7).
std::string ManualPage(const CLI::App& app);

/// "; did you mean --filter", or nothing where no command or option is near. command: null before a command.
std::string DidYouMean(const std::string& word, const CLI::App& app, const CLI::App* command);

}  // namespace tarnfind
