/// What the commands that show cameras have in common.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/finder_session.h"
#include "tools/options.h"
#include "tools/search_view.h"

namespace tarnfind {

/// The time that a command receives: what --for says, else `usual`; empty with --watch.
std::optional<std::chrono::milliseconds> ReceivingTime(const Options& options, double usual);

/// Whether a camera passes all filters.
FoundCameras::Filter CombinedFilter(const Options& options);

/// Throws Missed where --expect or --expect-mac is not met by the cameras that are shown and have not gone.
void CheckExpectations(const Options& options, const FoundCameras& cameras);

/// How long a search lasts where --for is not given, and how long a question waits for its answer.
inline constexpr double kUsualSearchSeconds = 5;
inline constexpr double kUsualAnswerSeconds = 2;

std::chrono::milliseconds MillisecondsSince(Clock::time_point time);

/// Asks the server about a camera by its IP address or, where that is empty, by its hardware address. doing: as in
/// FinderSession::Call.
void AskAbout(FinderSession& session, const std::string& doing, const std::string& ip, const std::string& mac);

/// A command of the finder that a search sends after it has asked for the server's list.
struct SentCommand {
  FinderSession::FinderCall call;  ///< empty: none is sent
  std::string sent;                ///< printed afterwards
  Json summary;                    ///< first keys of the summary in JSON
};
/// The view that the options ask for. summary: first keys of the summary in JSON.
std::unique_ptr<SearchView> MakeSearchView(const Options& options, const FoundCameras& cameras, const Json& summary,
                                           TextOutput& output);
/// output: where the view may write.
using ViewMaker = std::function<std::unique_ptr<SearchView>(const FoundCameras& cameras, TextOutput& output)>;

/// Searches, and sends the command once the server's list has arrived or failed. The time begins again when the library
/// has returned from the command. usualSeconds: where --for is not given. makeView: empty for MakeSearchView.
void RunSearchWith(const SentCommand& command, double usualSeconds, const Options& options, TextOutput& output,
                   const ViewMaker& makeView = {});

}  // namespace tarnfind
