#include "tools/commands/receive.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tools/failure.h"
#include "tools/mac_address.h"

namespace tarnfind {

std::optional<std::chrono::milliseconds> ReceivingTime(const Options& options, double usual) {
  if (options.watch) return std::nullopt;
  return std::chrono::milliseconds(static_cast<std::int64_t>(options.seconds.value_or(usual) * 1000));
}

std::chrono::milliseconds MillisecondsSince(Clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - time);
}

void AskAbout(FinderSession& session, const std::string& doing, const std::string& ip, const std::string& mac) {
  session.Call(doing, [byIp = !ip.empty(), text = Utf16FromUtf8(ip.empty() ? mac : ip)](auto& finder) {
    byIp ? finder.RequestInfoByIp(text.c_str()) : finder.SendMacAddress(text.c_str());
  });
}

FoundCameras::Filter CombinedFilter(const Options& options) {
  if (options.filters.empty()) return {};
  return [filters = options.filters](const FoundCamera& found) {
    return std::all_of(filters.begin(), filters.end(), [&](const auto& filter) { return filter(found); });
  };
}

void CheckExpectations(const Options& options, const FoundCameras& cameras) {
  const auto present = [](const FoundCamera& found) { return !found.IsGone(); };
  const auto count = static_cast<std::size_t>(std::count_if(cameras.Shown().begin(), cameras.Shown().end(), present));
  if (options.expectedCount && count < *options.expectedCount)
    throw Missed(fmt::format("expected {} cameras or more, there are {}", *options.expectedCount, count));
  std::vector<std::string> missing;
  for (const std::string& mac : options.expectedMacs) {
    const FoundCamera* const found = cameras.FindByText(mac);
    if (!found || !found->shown || !present(*found)) missing.push_back(mac);
  }
  if (!missing.empty()) throw Missed(fmt::format("expected and not there: {}", fmt::join(missing, ", ")));
}

}  // namespace tarnfind
