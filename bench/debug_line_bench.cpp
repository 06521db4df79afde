#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "diagnostics/debug_out.h"
#include "diagnostics/debug_out_settings.h"
#include "diagnostics/debug_out_streamer.h"
#include "sample.h"

namespace {

constexpr char kMessage[] = "Camera 192.168.100.17 answered after 153 ms, firmware 7.10.76";

std::filesystem::path FilePath() {
  return std::filesystem::temp_directory_path() / "tarn_bench_debug_line.txt";
}

std::int64_t LinesInFile() {
  std::int64_t lines = 0;
  std::ifstream file(FilePath());
  for (std::string line; std::getline(file, line);) lines += line.find(kMessage) != std::string::npos;
  return lines;
}

/// The objects that the library makes when it is loaded.
void MakeSettings() {
  static const Kestrel::DebugOutSettings settings;
  static const Kestrel::DebugOutReadyMark readyMark;
}

/// Writes to the file and to the history. The streamer flushes the file after each message.
void DebugLine(benchmark::State& state) {
  MakeSettings();
  const auto streamer = Kestrel::DebugOutStreamer::Get();
  if (state.thread_index() == 0) {
    streamer->SetOutputTargets(Kestrel::dotFile, Kestrel::otmReplace);
    sample::Require(streamer->OpenOutputFile(FilePath().u16string().c_str()), "the file opens");
  }
  for (auto _ : state) Kestrel::DebugOut("NET", Kestrel::dolError) << kMessage;
  if (state.thread_index() == 0) {
    streamer->SetOutputTargets(Kestrel::dotFile, Kestrel::otmRemove);
    sample::Require(LinesInFile() == state.iterations() * state.threads(), "every line is in the file");
    std::filesystem::remove(FilePath());
  }
}
BENCHMARK(DebugLine)->ArgName("flushed")->Arg(1)->UseRealTime()->Threads(1)->Threads(2);

void DebugLineSuppressed(benchmark::State& state) {
  MakeSettings();
  const auto history = [] { return Kestrel::DebugOutStreamer::Get()->GetHistory().Entries().size(); };
  const std::size_t before = history();
  int milliseconds = 153;
  for (auto _ : state) {
    benchmark::DoNotOptimize(milliseconds);
    Kestrel::DebugOut("NET", 4) << "Camera answered after " << milliseconds << " ms";
    benchmark::ClobberMemory();
  }
  sample::Require(history() == before, "nothing is written");
}
BENCHMARK(DebugLineSuppressed)->Name("DebugLine/suppressed");

}  // namespace
