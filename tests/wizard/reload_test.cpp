/// Loading and unloading, again and again.
#include <future>
#include <thread>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Reload = WizardTest;

TEST_F(Reload, AThousandLoadsWithADeliveryEachLeaveNothingBehind) {
  const Bytes block = SampleOfType(3);
  std::ptrdiff_t threads = 0;  // after the first: a sanitizer starts one of its own with the first that it sees
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  for (int i = 0; i < 1000; ++i) {
    CountingCallback callback;
    {
      const FinderLibrary library;
      const auto finder = library.MakeFinder();
      RecordingReceiver receiver;
      finder->SetNewCameraDataCallback(&callback);
      ASSERT_TRUE(dbi.Push(3, block));
      finder->ListFoundCameras(&receiver);
      ASSERT_EQ(receiver.cameras.size(), 3U);
    }
    ASSERT_FALSE(FinderLibrary::IsLoaded());
    ASSERT_EQ(callback.count, 1);
    ASSERT_EQ(callback.references, 0U);
    if (i == 0) threads = GetProcessUse().threads;
    ASSERT_EQ(GetProcessUse().threads, threads);
    dbi.ForgetCalls();
  }
}

/// The wizard releases the finder, and frees the library, while its callback still holds a delivery up. The threads
/// inside go on in code that is there. (Which is why the library stays, and why this comes last.)
TEST_F(Reload, WhatIsUnloadedDuringADeliveryIsThereUntilItsThreadsHaveLeft) {
  for (int i = 0; i < 50; ++i) {
    CountingCallback callback;
    std::promise<void> entered, unloaded;
    std::thread delivery;
    callback.inside = [&] {
      entered.set_value();
      unloaded.get_future().wait();
    };
    {
      const FinderLibrary library;
      const auto finder = library.MakeFinder();
      finder->SetNewCameraDataCallback(&callback);
      delivery = std::thread([&] { dbi.Push(3, SampleOfType(3)); });
      entered.get_future().wait();
    }
    unloaded.set_value();
    delivery.join();
    ASSERT_EQ(callback.count, 1);
    ASSERT_EQ(callback.references, 0U);
    dbi.ForgetCalls();
  }
}

}  // namespace
}  // namespace wizard
