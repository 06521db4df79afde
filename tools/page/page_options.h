/// What page, report and search --report are told on the command line.
#pragma once

#include <cstdint>
#include <string>

namespace tarnfind {

struct PageOptions {
  std::uint16_t port = 0;  ///< 0: one that is free
  bool openBrowser = false;
  bool once = false;   ///< ends when the last page is closed
  std::string report;  ///< file to be written; empty: none
  std::string lines;   ///< file to be read, of search --json
};

}  // namespace tarnfind
