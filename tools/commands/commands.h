/// The commands of the tool. Each throws what failure.h lists, and lets exceptions of the library through.
#pragma once

#include "tools/options.h"
#include "tools/text_output.h"

namespace tarnfind {

void RunSearch(const Options& options, TextOutput& output);
/// Shows how the cameras that are found differ from those of options.capture.against.
void RunSearchAgainst(const Options& options, TextOutput& output);
/// Shows a search in the browser.
void RunPage(const Options& options, TextOutput& output);
/// Searches, and writes what is found to options.page.report too.
void RunSearchWithReport(const Options& options, TextOutput& output);
/// Writes the lines of an earlier search as a page.
void RunReport(const Options& options, TextOutput& output);
void RunList(const Options& options, TextOutput& output);
void RunInfo(const Options& options, TextOutput& output);
void RunSendMac(const Options& options, TextOutput& output);
void RunBare(const Options& options, TextOutput& output);
void RunCheck(const Options& options, TextOutput& output);
void RunScenario(const Options& options, TextOutput& output);
void RunSetNetwork(const Options& options, TextOutput& output);
void RunDecode(const Options& options, TextOutput& output);
void RunEncode(const Options& options, TextOutput& output);
void RunShow(const Options& options, TextOutput& output);
void RunStats(const Options& options, TextOutput& output);
void RunRedact(const Options& options, TextOutput& output);
void RunExplain(const Options& options, TextOutput& output);
void RunDiff(const Options& options, TextOutput& output);

}  // namespace tarnfind
