/// What a command is told on the command line. Texts are valid UTF-8, addresses are checked and in their standard form.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/capture_options.h"
#include "tools/found_cameras.h"
#include "tools/network_change.h"
#include "tools/page/page_options.h"
#include "tools/picture_store.h"

namespace tarnfind {

struct Column;

struct Options {
  // Every command.
  bool json = false;
  bool showPasswords = false;
  bool debugOutput = false;
  bool times = false;
  std::string library;  ///< empty: look for it

  // Commands that receive.
  std::optional<double> seconds;
  PictureFolder pictures;
  bool watch = false;  ///< until Ctrl-C

  // Which cameras are shown, and how.
  const Column* sort = nullptr;  ///< null: in order of arrival
  std::vector<FoundCameras::Filter> filters;
  bool csv = false;
  std::string program;  ///< run for each event; empty: none

  // What must be there at the end.
  std::optional<std::size_t> expectedCount;
  std::vector<std::string> expectedMacs;

  // The camera that info and send-mac are about.
  std::string mac;
  std::string ip;

  // scenario.
  std::string scenarioFile;
  bool playScenario = false;

  // set-network.
  NetworkChange change;
  std::string batchFile;      ///< empty: `change` is the only one
  std::string remainingFile;  ///< empty: write none
  std::string passwordFile;   ///< empty: none; "-": standard input
  bool askPassword = false;
  bool yes = false;
  bool force = false;
  int networkCommandType = 1;

  CaptureOptions capture;
  PageOptions page;
};

}  // namespace tarnfind
