/// Options and examples of the commands about messages and captures, for the table of commands.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/options.h"

namespace tarnfind {

void DefineDecode(CLI::App& command, Options& options);
void DefineEncode(CLI::App& command, Options& options);
void DefineShow(CLI::App& command, Options& options);
void DefineStats(CLI::App& command, Options& options);
void DefineRedact(CLI::App& command, Options& options);
void DefineExplain(CLI::App& command, Options& options);
void DefineDiff(CLI::App& command, Options& options);

}  // namespace tarnfind
