/// Loading and unloading, again and again.
#include <filesystem>
#include <iterator>
#include <system_error>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Reload = WizardTest;

/// Threads of this process where the system tells, else 0.
std::ptrdiff_t ThreadCount() {
  std::error_code none;
  const std::filesystem::directory_iterator threads("/proc/self/task", none), end;
  return none ? 0 : std::distance(threads, end);
}

TEST_F(Reload, AThousandLoadsWithADeliveryEachLeaveNothingBehind) {
  const Bytes block = ReadSample("block-3-camera.bin");
  const std::ptrdiff_t threads = ThreadCount();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  for (int i = 0; i < 1000; ++i) {
    RecordingCallback callback;
    RecordingReceiver receiver;
    {
      const FinderLibrary library;
      const auto finder = library.MakeFinder();
      finder->SetNewCameraDataCallback(&callback);
      ASSERT_TRUE(dbi.Push(3, block));
      finder->ListFoundCameras(&receiver);
    }
    ASSERT_EQ(callback.Count(), 1U);
    ASSERT_EQ(receiver.cameras.size(), 3U);
    ASSERT_EQ(callback.references, 0U);
    ASSERT_EQ(ThreadCount(), threads);
    dbi.ForgetCalls();
  }
}

}  // namespace
}  // namespace wizard
