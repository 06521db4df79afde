/// From arguments to a command and its options.
#pragma once

#include <string>
#include <vector>

#include "tools/options.h"
#include "tools/text_output.h"

namespace tarnfind {

struct CommandLine {
  void (*run)(const Options& options, TextOutput& output) = nullptr;  ///< null: only `help` is wanted
  Options options;
  std::string help;
};

/// arguments: UTF-8, the program's name first. Throws WrongUse with one line that says what is wrong.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace tarnfind
