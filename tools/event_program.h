/// The program of --exec, run for each event.
#pragma once

#include <string>
#include <utility>

#include "tools/json_objects.h"

namespace tarnfind {

class EventProgram {
 public:
  /// program: file, or a name that the system looks for; empty: nothing is run.
  explicit EventProgram(std::string program) : program_(std::move(program)) {}

  /// Runs it and waits for its end; no shell takes part. It gets the object on standard input and its texts and numbers
  /// in the environment: TARN_EVENT, TARN_CHANGE, and TARN_MAC, TARN_IP and so on for the members of "camera".
  void Run(const Json& event);
  /// What went wrong at first; empty where nothing did.
  const std::string& Error() const { return error_; }

 private:
  std::string program_;
  std::string error_;
};

}  // namespace tarnfind
