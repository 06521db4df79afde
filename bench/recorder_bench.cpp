/// What recording costs: the same operations through the finder library and through the recorder, over a scripted
/// platform library. Use: TARN_CAPTURE=FILE recorder_bench, with a file on the disk that is to be measured.
///
/// The recorder writes two calls of the platform library for a bare command, and for a picture one block and the end of
/// its delivery.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "platform/append_file.h"
#include "wizard/finder_library.h"

namespace {

using wizard::CountingCallback;
using wizard::FinderLibrary;

constexpr std::size_t kPictureSize = 100 * 1024;
constexpr double kCallsOfABareCommand = 2;

/// The library that is measured, with a callback installed.
struct Wizard {
  explicit Wizard(const char* file) {
    setenv("TARN_LIBRARY_UNDER_TEST", file, 1);
    library = std::make_unique<FinderLibrary>();
    finder = library->MakeFinder();
    finder->SetNewCameraDataCallback(&callback);
  }
  CountingCallback callback;
  std::unique_ptr<FinderLibrary> library;
  Kestrel::ComPtr<wizard::ICameraFinder> finder;
};

void BareCommand(benchmark::State& state, const char* file) {
  GetScriptedDbi()->Reset();
  GetScriptedDbi()->StopNotingCalls();
  const Wizard wizard(file);
  for (auto _ : state) wizard.finder->SendBareCommand();
  state.counters["per call"] = benchmark::Counter(static_cast<double>(state.iterations()) * kCallsOfABareCommand,
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

scripted::Bytes PictureBlock() {
  scripted::Bytes block = {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0B, 2, 0, 0, 0, 'A', 0, 6, 0, 0, 0};
  for (int shift = 0; shift < 64; shift += 8)
    block.push_back(static_cast<std::uint8_t>(std::uint64_t{kPictureSize} >> shift));
  for (std::size_t i = 0; i < kPictureSize; ++i) block.push_back(static_cast<std::uint8_t>(i * 2654435761U >> 13));
  return block;
}

void Picture(benchmark::State& state, const char* file) {
  GetScriptedDbi()->Reset();
  GetScriptedDbi()->StopNotingCalls();
  const Wizard wizard(file);
  const scripted::Bytes block = PictureBlock();
  for (auto _ : state) GetScriptedDbi()->Push(1, block);
  if (wizard.callback.count == 0) state.SkipWithError("no picture was delivered");
}

/// What one copy of the block costs, for comparison: to memory, and to a file as the recording writes it.
void CopyToMemory(benchmark::State& state) {
  const scripted::Bytes block = PictureBlock();
  scripted::Bytes copy(block.size());
  for (auto _ : state) {
    std::copy(block.begin(), block.end(), copy.begin());
    benchmark::DoNotOptimize(copy.data());
  }
}

void CopyToFile(benchmark::State& state) {
  const char* const capture = std::getenv("TARN_CAPTURE");
  if (!capture) return state.SkipWithError("TARN_CAPTURE names no file");
  const std::string name = std::string(capture) + ".copy";
  const std::u16string path(name.begin(), name.end());
  platform::AppendFile* const file = platform::OpenForAppend(path.c_str());
  if (!file) return state.SkipWithError("the file cannot be opened");
  const scripted::Bytes block = PictureBlock();
  const platform::BytePiece piece = std::as_bytes(std::span(block));
  for (auto _ : state) platform::Append(file, {&piece, 1});
  platform::CloseAppendFile(file);
  std::filesystem::remove(name);
}

BENCHMARK_CAPTURE(BareCommand, finder, TARN_FINDER_FILE);
BENCHMARK_CAPTURE(BareCommand, recorder, TARN_RECORDER_FILE);
BENCHMARK_CAPTURE(Picture, finder, TARN_FINDER_FILE)->UseRealTime();
BENCHMARK_CAPTURE(Picture, recorder, TARN_RECORDER_FILE)->UseRealTime();
BENCHMARK(CopyToMemory);
BENCHMARK(CopyToFile)->UseRealTime();

}  // namespace
