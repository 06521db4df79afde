/// A search that a browser shows. The search is the ordinary one, with a view of its own.
#include <fmt/format.h>

#include <memory>
#include <thread>

#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/page/lines_view.h"
#include "tools/page/page_server.h"
#include "tools/page/temporary_folder.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::chrono::milliseconds kCheckInterval{50};

/// Prints what stands at the end of a search; the page shows the rest.
class SummaryView final : public SearchView {
 public:
  explicit SummaryView(TextOutput& output) : output_(output) {}
  void ShowCamera(const FoundCamera&, std::optional<std::uint32_t>) override {}
  void ShowPicture(const PictureEvent&, const FoundCamera*) override {}
  void ShowValues(const ValuesEvent&, const FoundCamera*) override {}
  void Refresh(const SearchProgress&) override {}
  void Finish(const SearchProgress& progress) override { output_.Write(Remarks(progress) + Summary(progress) + '\n'); }

 private:
  TextOutput& output_;
};

/// Until Ctrl-C or, with --once, until the last page is closed.
void ServeOn(PageServer& server) {
  while (!platform::Interrupted() && !server.Lines().IsAbandoned()) std::this_thread::sleep_for(kCheckInterval);
}

}  // namespace

void RunPage(const Options& options, TextOutput& output) {
  if (options.showPasswords) throw WrongUse("a page never shows passwords");
  platform::CatchInterrupts();
  Options search = options;
  search.watch = !options.seconds;
  std::optional<TemporaryFolder> temporary;
  if (search.pictures.path.empty())
    search.pictures = {Utf8FromPath(temporary.emplace().Path()), kMostTemporaryPictureBytes};
  PagePictures pictures(PathFromUtf8(search.pictures.path));
  PageServer server({options.page.port, options.page.once}, pictures);
  output.Write(options.json ? JsonLine({{"event", "page"}, {"address", server.Address()}}) : server.Address() + '\n');
  if (options.page.openBrowser)
    if (const std::string error = platform::OpenInBrowser(server.Address()); !error.empty())
      platform::Write(platform::Stream::kError, fmt::format("tarnfind: cannot open a browser: {}\n", error));

  const Json summary = {{"command", "search"}};
  try {
    RunSearchWith({{}, {}, summary}, 0, search, output, [&](const FoundCameras& cameras, TextOutput& collected) {
      return MakeBothViews(
          options.json ? MakeSearchView(search, cameras, summary, collected) : std::make_unique<SummaryView>(collected),
          MakeLinesView(server.Lines(), &pictures, cameras, summary));
    });
  } catch (const std::exception& error) {
    server.Lines().Add(ErrorLine(error), {});
    server.Lines().Finish();
    platform::Write(platform::Stream::kError, "tarnfind: the search has ended with an error; the page says which\n");
    ServeOn(server);
    throw;
  } catch (...) {  // the reader of the output has gone
    server.Lines().Finish();
    throw;
  }
  server.Lines().Finish();
  ServeOn(server);
}

}  // namespace tarnfind
