/// The texts that all views for people share.
#include <fmt/format.h>

#include <algorithm>

#include "tools/search_view.h"
#include "tools/text.h"

namespace tarnfind {

void SearchView::ShowProblem(const std::string& text) {
  platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", text));
}

std::vector<const FoundCamera*> SortedCameras(const FoundCameras& cameras, const Column* sort) {
  std::vector<const FoundCamera*> rows = cameras.Latest(cameras.Shown().size());
  if (sort) SortBy(*sort, rows);
  return rows;
}

std::string Totals(const SearchProgress& progress) {
  const FoundCameras& cameras = progress.cameras;
  const CameraCounts& counts = cameras.Counts();
  const std::size_t shown = cameras.Shown().size();
  return fmt::format("{}: {} known, {} new; {} changed, {} gone; {}, {}{}", Counted(cameras.Size(), "camera"),
                     counts.known, counts.fresh, counts.changed, counts.gone, Counted(progress.pictures, "picture"),
                     Counted(progress.values, "value list"),
                     shown == cameras.Size() ? "" : fmt::format("; {} shown", shown));
}

std::string Remarks(const SearchProgress& progress) {
  std::string lines;
  for (const auto& [ip, users] : progress.cameras.SharedIps()) {
    std::vector<std::string> macs;
    for (const FoundCamera* const user : users) macs.push_back(Printable(user->camera.mac));
    lines += fmt::format("! {} cameras have the address {}: {}\n", users.size(), Printable(ip), fmt::join(macs, ", "));
  }
  for (const FoundCamera& found : progress.cameras.Shown())
    if (!found.listedTwiceAt.empty())
      lines += fmt::format("! The list has {} twice, also at {}\n", Printable(found.camera.mac),
                           Printable(found.listedTwiceAt));
  if (progress.list == SearchProgress::List::kFailed)
    lines +=
        fmt::format("! The list of known cameras is missing, so known ones count as new: {}\n", progress.listError);
  if (progress.list == SearchProgress::List::kUnderWay)
    lines += "! The list of known cameras has not arrived, so known ones count as new\n";
  const bool nothing = progress.cameras.Size() == 0 && progress.pictures == 0 && progress.values == 0;
  if (nothing && progress.list == SearchProgress::List::kArrived) lines += std::string("! ") + kNothingArrived + '\n';
  return lines;
}

std::string Summary(const SearchProgress& progress) {
  return fmt::format("{} in {}{}", Totals(progress), Seconds(progress.elapsed),
                     progress.interrupted ? " (interrupted)" : "");
}

std::string Seconds(std::chrono::milliseconds duration) {
  return fmt::format("{}.{} s", duration.count() / 1000, duration.count() / 100 % 10);
}

}  // namespace tarnfind
