/// What the commands about messages and captures are told.
#pragma once

#include <string>
#include <vector>

namespace tarnfind {

struct CaptureOptions {
  std::string file = "-";  ///< "-": standard input
  std::string form;        ///< what decode takes its input for; empty: recognise it
  bool hex = false;
  std::string capture;  ///< explain: the capture; empty: the one that TARN_CAPTURE names
  std::string target;   ///< redact: the file to write; diff: the second capture or search
  std::string address;  ///< explain: hardware or IP address of the camera
  std::string against;  ///< search: the capture or saved search to compare with; empty: none
  std::vector<std::string> filters;
  bool follow = false;
};

}  // namespace tarnfind
