/// What a command is told on the command line. Texts are valid UTF-8, addresses are checked and in their standard form.
#pragma once

#include <optional>
#include <string>

#include "tools/capture_options.h"

namespace tarnfind {

struct Options {
  // Every command.
  bool json = false;
  bool showPasswords = false;
  bool debugOutput = false;
  std::string library;  ///< empty: look for it

  // search, info
  std::optional<double> seconds;
  std::string pictures;  ///< empty: keep none

  // The camera that the command is about.
  std::string mac;
  std::string ip;

  // set-network. What is not given stays as the camera has it.
  std::optional<std::string> newIp;
  std::optional<std::string> newMask;
  std::optional<std::string> newGateway;
  std::optional<bool> newDhcp;
  std::optional<std::string> newUser;
  std::optional<std::string> newPassword;
  int networkCommandType = 1;

  CaptureOptions capture;
};

}  // namespace tarnfind
