#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "com/com_wrapper.h"
#include "platform/threads.h"
#include "protocol/block_receiver.h"
#include "sample.h"

namespace {

using namespace Tarn::CameraFinding;
using Clock = std::chrono::steady_clock;
using sample::Bytes;

struct Task {
  std::uint64_t runs = 0;
  std::thread::id ranOn;
  static void Run(void* context) {
    auto& task = *static_cast<Task*>(context);
    ++task.runs;
    task.ranOn = std::this_thread::get_id();
  }
  void HandOver() { sample::Require(platform::RunOnWorkerAndWait(&Task::Run, this), "a worker"); }
};

void HandOff(benchmark::State& state) {
  Task task;
  std::uint64_t calls = 0;
  for (auto _ : state) {
    task.HandOver();
    ++calls;
  }
  sample::Require(task.runs == calls && task.ranOn != std::this_thread::get_id(), "every task ran on another thread");
}

/// Sleeps a millisecond without timing it, so that workers become idle. Then times `calls` calls and reports the mean.
template <class Call>
void TimeAfterRest(benchmark::State& state, int calls, Call call) {
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const auto start = Clock::now();
  for (int i = 0; i < calls; ++i) call();
  state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count() / calls);
}

void HandOffIdle(benchmark::State& state) {
  Task task;
  task.HandOver();
  for (auto _ : state) TimeAfterRest(state, 1, [&] { task.HandOver(); });
}

/// A plain worker, for comparison: both sides sleep on a condition variable, and no processor is chosen for it.
class PlainWorker {
 public:
  void HandOver() {
    std::unique_lock lock(mutex_);
    wanted_ = true;
    start_.notify_one();
    finished_.wait(lock, [this] { return !wanted_; });
  }

 private:
  void Run(std::stop_token stop) {
    std::unique_lock lock(mutex_);
    while (start_.wait(lock, stop, [this] { return wanted_; })) {
      wanted_ = false;
      finished_.notify_one();
    }
  }

  std::mutex mutex_;
  std::condition_variable_any start_, finished_;
  bool wanted_ = false;
  std::jthread thread_{[this](std::stop_token stop) { Run(stop); }};
};

/// Counts the hand-overs that took longer than 100 us, which other programs on the same processors cause.
template <class Worker>
void Stalls(benchmark::State& state) {
  constexpr std::chrono::microseconds kStall{100};
  Worker worker;
  std::uint64_t stalls = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    worker.HandOver();
    stalls += Clock::now() - start > kStall;
  }
  state.counters["stalls"] = static_cast<double>(stalls);
}

/// Counts what arrives and keeps nothing.
class CountingWizard : public INewCameraDataCallback {
 public:
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return ++references_; }
  std::uint32_t Release() override { return --references_; }
  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override {
    bytes += byteCount;
    benchmark::DoNotOptimize(picture[byteCount - 1]);
    SysFreeString(cameraText);
    return S_OK;
  }
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t*, std::uint64_t) override {
    SysFreeString(cameraText);
    return S_OK;
  }
  HRESULT CameraInfoReceived(std::uint32_t, ICameraInfo*, std::int32_t) override {
    ++cameras;
    return S_OK;
  }
  std::uint64_t cameras = 0, bytes = 0;

 private:
  std::atomic<std::uint32_t> references_{0};
};

struct Receiver {
  CountingWizard wizard;
  Kestrel::ComPtr<CameraDataReceiver> object =
      Kestrel::MakeComObject<CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard);
  void Deliver(std::uint32_t type, const Bytes& block) { object->OnGenericData(2, type, block.data(), block.size()); }
};

void DeliverCamera(benchmark::State& state) {
  const Bytes block = sample::CameraBlock();
  Receiver receiver;
  for (auto _ : state) receiver.Deliver(3, block);
  sample::Require(receiver.wizard.cameras == static_cast<std::uint64_t>(state.iterations()), "every camera arrived");
}

void DeliverCameraAfterRest(benchmark::State& state, int blocks) {
  const Bytes block = sample::CameraBlock();
  Receiver receiver;
  receiver.Deliver(3, block);
  for (auto _ : state) TimeAfterRest(state, blocks, [&] { receiver.Deliver(3, block); });
}

void DeliverPicture(benchmark::State& state) {
  const Bytes block = sample::PictureBlock(static_cast<std::size_t>(state.range(0)));
  Receiver receiver;
  for (auto _ : state) receiver.Deliver(1, block);
  sample::Require(receiver.wizard.bytes == static_cast<std::uint64_t>(state.iterations() * state.range(0)),
                  "every picture");
}

/// The least time that a picture's delivery can take, because its bytes are copied once.
void MemoryCopy(benchmark::State& state) {
  const Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  Bytes copy(bytes.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::ClobberMemory();
  }
}

void PictureSizes(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t size : {100, 1024, 10240, 102400, 1048576, 8388608}) benchmark->Arg(size);
}

BENCHMARK(HandOff)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(HandOff)->Threads(2)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(HandOffIdle)->Name("HandOff/idle")->UseManualTime()->MeasureProcessCPUTime()->Iterations(200);
BENCHMARK(Stalls<Task>)->Name("HandOffStalls/library")->UseRealTime()->Iterations(100'000);
BENCHMARK(Stalls<PlainWorker>)->Name("HandOffStalls/plain")->UseRealTime()->Iterations(100'000);
BENCHMARK(DeliverCamera)->Name("BlockDelivery/type3")->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(DeliverCamera)->Name("BlockDelivery/type3")->ThreadRange(2, 8)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(DeliverCameraAfterRest, idle, 1)
    ->Name("BlockDelivery/type3/idle")
    ->UseManualTime()
    ->MeasureProcessCPUTime()
    ->Iterations(200);
BENCHMARK_CAPTURE(DeliverCameraAfterRest, burst, 10)
    ->Name("BlockDelivery/type3/burst")
    ->UseManualTime()
    ->MeasureProcessCPUTime()
    ->Iterations(200);
BENCHMARK(DeliverPicture)
    ->Name("BlockDelivery")
    ->ArgName("picture")
    ->Apply(PictureSizes)
    ->UseRealTime()
    ->MeasureProcessCPUTime();
BENCHMARK(MemoryCopy)->ArgName("bytes")->Apply(PictureSizes);

}  // namespace
