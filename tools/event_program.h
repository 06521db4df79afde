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

  /// Runs it and waits for its end; no shell takes part. It gets the object on standard input and the object's members
  /// in the environment: TARN_EVENT, TARN_CHANGE, and TARN_MAC, TARN_IP and so on for the members of "camera".
  /// Its first exit code that is not 0 is reported on standard error, and so is the reason why it cannot be run; then
  /// it is not tried again.
  void Run(const Json& event);
  /// The first exit code that is not 0, or why the program cannot be run; empty where nothing went wrong.
  const std::string& Error() const { return error_; }

 private:
  std::string program_;
  std::string error_;
};

}  // namespace tarnfind
