/// A long run in one process: memory, threads and open replies stay where they were after warming up.
/// TARN_SOAK_FACTOR multiplies its length; 50 makes 1,000,000 blocks and 100,000 commands.
#include <cstdlib>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Soak = WizardTest;

TEST_F(Soak, MemoryAndThreadsStayWhereTheyWere) {
  const char* const factor = std::getenv("TARN_SOAK_FACTOR");
  const int rounds = 20 * (factor ? std::atoi(factor) : 1);
  constexpr int kBlocks = 1000, kPairsOfCommands = 50;
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  CountingCallback wizard;
  finder->SetNewCameraDataCallback(&wizard);
  dbi.StopNotingCalls();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  const Bytes blocks[] = {SampleOfType(1), SampleOfType(2), SampleOfType(3), ReadSample("block-3-cut.bin")};
  const std::uint32_t types[] = {1, 2, 3, 3};
  ProcessUse warm;
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < kBlocks; ++i) dbi.Push(types[i % 4], blocks[i % 4]);
    for (int i = 0; i < kPairsOfCommands; ++i) {
      finder->ListFoundCameras(nullptr);
      finder->SendMacAddress(u"00:40:8C:00:00:01");
    }
    if (round == rounds / 4) warm = GetProcessUse();
  }
  const ProcessUse end = GetProcessUse();
  EXPECT_EQ(wizard.count, rounds * kBlocks / 4 * 3);
  EXPECT_EQ(end.threads, warm.threads);
  EXPECT_LE(end.residentBytes, warm.residentBytes + (4 << 20));
}

}  // namespace
}  // namespace wizard
