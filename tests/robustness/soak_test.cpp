/// A long run in one process: after ordinary and hostile messages and many deliveries at once, memory and threads are
/// back where they were. TARN_SOAK_FACTOR multiplies its length; 250 makes 1,000,000 blocks, 100,000 commands and
/// 1,000,000 hostile messages.
#include <malloc.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "robustness/worst_messages.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

/// As SECURITY.md states.
constexpr std::int64_t kBytesThatStay = 12 << 20;
constexpr std::ptrdiff_t kThreadsThatStay = 16;

using Soak = WizardTest;

/// Without the freed memory that lies between blocks in use, because its amount depends on how the threads ran.
ProcessUse GetTrimmedUse() {
#ifdef M_TRIM_THRESHOLD
  malloc_trim(0);
#endif
  return GetProcessUse();
}

/// The deliveries meet inside the wizard: none of them ends before all have begun.
void DeliverAtOnce(int count, scripted::Dbi& dbi, CountingCallback& wizard) {
  std::mutex lock;
  std::condition_variable all;
  int inside = 0;
  wizard.inside = [&] {
    std::unique_lock guard(lock);
    if (++inside == count) all.notify_all();
    all.wait(guard, [&] { return inside == count; });
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back([&dbi] { dbi.Push(3, SampleOfType(3)); });
  for (std::thread& thread : threads) thread.join();
  wizard.inside = nullptr;
}

TEST_F(Soak, MemoryAndThreadsStayWhereTheyWere) {
  const char* const factor = std::getenv("TARN_SOAK_FACTOR");
  const int rounds = 4 * (factor ? std::atoi(factor) : 1);
  constexpr int kBlocks = 1000, kPairsOfCommands = 50, kOfEachWorst = 72;
  constexpr std::size_t kSmall = 1 << 10, kQuotedText = 1 << 16, kLarge = 1 << 20;
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  CountingCallback wizard;
  finder->SetNewCameraDataCallback(&wizard);
  dbi.StopNotingCalls();
#ifdef M_TRIM_THRESHOLD  // else the GNU C library keeps up to 64 MiB of what was freed, for each thread
  mallopt(M_TRIM_THRESHOLD, 1 << 17);
#endif
  const Bytes reply = ReadSample("reply-list-3.bin");
  const Bytes blocks[] = {SampleOfType(1), SampleOfType(2), SampleOfType(3), ReadSample("block-3-cut.bin")};
  const std::uint32_t types[] = {1, 2, 3, 3};
  for (int i = 0; i < 4; ++i) dbi.Push(types[i], blocks[i]);
  const ProcessUse warm = GetTrimmedUse();

  for (const WorstMessage& worst : kWorstMessages) worst.Send(dbi, finder, worst.OfSize(kLarge));
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < kBlocks; ++i) dbi.Push(types[i % 4], blocks[i % 4]);
    dbi.SetReply(reply);
    for (int i = 0; i < kPairsOfCommands; ++i) {
      finder->ListFoundCameras(nullptr);
      finder->SendMacAddress(u"00:40:8C:00:00:01");
    }
    for (const WorstMessage& worst : kWorstMessages) {
      const Bytes message = worst.OfSize(std::string_view(worst.name).ends_with("AText") ? kQuotedText : kSmall);
      for (int i = 0; i < kOfEachWorst; ++i) worst.Send(dbi, finder, message);
    }
  }
  DeliverAtOnce(200, dbi, wizard);
  // Threads end a little later than the work that they did.
  ProcessUse end = GetTrimmedUse();
  for (int i = 0; i < 1000 && end.threads > warm.threads + kThreadsThatStay; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    end = GetTrimmedUse();
  }
  EXPECT_LE(end.threads, warm.threads + kThreadsThatStay);
#ifndef TARN_SANITIZED  // else it is mostly the sanitizer's memory
  EXPECT_LE(end.residentBytes, warm.residentBytes + kBytesThatStay);
#endif
}

}  // namespace
}  // namespace wizard
