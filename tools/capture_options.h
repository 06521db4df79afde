/// What the commands about messages and captures are told.
#pragma once

#include <string>

namespace tarnfind {

struct CaptureOptions {
  std::string file = "-";  ///< "-": standard input
  std::string form;        ///< what decode takes its input for; empty: recognise it
  bool hex = false;
};

}  // namespace tarnfind
