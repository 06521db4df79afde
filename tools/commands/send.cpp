/// The two commands that only send. What the server makes of them arrives at a search.
#include <fmt/format.h>

#include "tools/commands/commands.h"
#include "tools/finder_session.h"
#include "tools/json_objects.h"
#include "tools/text.h"

namespace tarnfind {

void RunSendMac(const Options& options, TextOutput& output) {
  FinderSession session(options.library);
  session.Finder().SendMacAddress(Utf16FromUtf8(options.mac).c_str());
  output.Write(options.json ? JsonLine({{"event", "summary"}, {"command", "send-mac"}, {"mac", options.mac}})
                            : fmt::format("Sent {}.\n", options.mac));
}

void RunBare(const Options& options, TextOutput& output) {
  FinderSession session(options.library);
  session.Finder().SendBareCommand();
  output.Write(options.json ? JsonLine({{"event", "summary"}, {"command", "bare"}}) : "Sent the bare command.\n");
}

}  // namespace tarnfind
