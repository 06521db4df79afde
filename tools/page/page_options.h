/// What the command page is told on the command line.
#pragma once

#include <cstdint>

namespace tarnfind {

struct PageOptions {
  std::uint16_t port = 0;  ///< 0: one that is free
  bool openBrowser = false;
  bool once = false;  ///< ends when the last page is closed
};

}  // namespace tarnfind
