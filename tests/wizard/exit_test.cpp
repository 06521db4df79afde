/// Programs that end in the middle of everything: while blocks are pushed and refused, cameras delivered and commands
/// sent on several threads. TARN_EXIT_ROUNDS programs are started, 30 unless set.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using std::chrono::microseconds;

/// Everything that a thread may still be in when the program ends; never destroyed.
struct Running {
  const FinderLibrary library;
  const ComPtr<ICameraFinder> finder = library.MakeFinder();
  CountingCallback callback;
  const Bytes refused = ReadSample("block-3-cut.bin"), delivered = SampleOfType(3);

  void Push(const Bytes& block) const {
    for (;;) GetScriptedDbi()->Push(3, block);
  }
  void Send() const {
    for (;;) finder->ListFoundCameras(nullptr);
  }
};

[[noreturn]] void EndInTheMiddle(int round) {
  auto& running = *new Running;
  static const Running* const reachable = &running;  // for a leak checker
  GetScriptedDbi()->StopNotingCalls();
  GetScriptedDbi()->SetReply(ReadSample("reply-list-3.bin"));
  static std::atomic<bool> endsInACallback{false};
  running.callback.inside = [] {
    if (endsInACallback.exchange(false)) std::exit(0);
  };
  running.finder->SetNewCameraDataCallback(&running.callback);
  for (int i = 0; i < 3; ++i) std::thread([] { reachable->Push(reachable->refused); }).detach();
  std::thread([] { reachable->Push(reachable->delivered); }).detach();
  std::thread([] { reachable->Send(); }).detach();
  std::this_thread::sleep_for(microseconds(round * 997 % 10000));
  if (round % 2 == 0) std::exit(0);
  endsInACallback = true;
  for (;;) std::this_thread::sleep_for(microseconds(1000));
}

TEST(ExitDeathTest, InTheMiddleOfEverythingIsAsCleanAsAnyOther) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* const asked = std::getenv("TARN_EXIT_ROUNDS");
  const int rounds = asked ? std::atoi(asked) : 30;
  for (int round = 0; round < rounds; ++round) {
    EXPECT_EXIT(EndInTheMiddle(round), testing::ExitedWithCode(0), "^$") << "round " << round;
  }
}

}  // namespace
}  // namespace wizard
