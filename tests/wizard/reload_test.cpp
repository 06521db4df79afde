/// Loading and unloading, again and again.
#include <chrono>
#include <cstdlib>
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
    // The system shows a thread for a moment after it has been joined.
    for (int wait = 0; wait < 1000 && GetProcessUse().threads > threads; ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(GetProcessUse().threads, threads);
    dbi.ForgetCalls();
  }
}

/// The receiver ends on the deliverer's thread, which may still be on its way out when the library is unloaded.
TEST_F(Reload, ACallbackThatReplacesItselfKeepsTheLibrary) {
  CountingCallback callback;
  {
    const FinderLibrary library;
    const auto finder = library.MakeFinder();
    callback.inside = [&] { finder->SetNewCameraDataCallback(nullptr); };
    finder->SetNewCameraDataCallback(&callback);
    dbi.Push(3, SampleOfType(3));
  }
  EXPECT_EQ(callback.count, 1);
  EXPECT_TRUE(FinderLibrary::IsLoaded());
}

/// A wizard may wait for its callback with the loader's lock held.
TEST_F(Reload, ADeliveryDoesNotNeedTheLoaderLock) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  CountingCallback callback;
  std::promise<void> running, locked, arrived;
  finder->SetNewCameraDataCallback(&callback);
  dbi.Push(3, SampleOfType(3));  // starts a worker; on Windows a thread that starts takes that lock
  std::thread delivery([&] {
    running.set_value();
    locked.get_future().wait();
    dbi.Push(7, SampleOfType(7));  // a camera whose texts become narrow
    arrived.set_value();
  });
  running.get_future().wait();
  dbi.insideLoad = [&] {
    locked.set_value();
    EXPECT_EQ(arrived.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
  };
  platform::FreeLibrary(platform::LoadLibraryExW(TARN_LOADING_MODULE, 0));
  delivery.join();
  EXPECT_EQ(callback.count, 2);
}

enum class Releases { kElsewhere, kInTheCallback, kInTheCallbackWhileTheLoaderIsLocked };

/// A process of its own, because the library stays: the wizard releases the finder, and frees the library, while its
/// callback holds a delivery up. The threads inside must find their code.
[[noreturn]] void UnloadDuringADelivery(scripted::Dbi& dbi, Releases how) {
  CountingCallback callback;
  std::promise<void> entered, release, released, unloaded;
  std::thread delivery;
  {
    const FinderLibrary library;
    auto finder = library.MakeFinder();
    callback.inside = [&] {
      entered.set_value();
      release.get_future().wait();
      if (how != Releases::kElsewhere) finder.Reset();
      released.set_value();
      unloaded.get_future().wait();
    };
    finder->SetNewCameraDataCallback(&callback);
    delivery = std::thread([&] { dbi.Push(3, SampleOfType(3)); });
    entered.get_future().wait();
    dbi.insideLoad = [&] {
      release.set_value();
      released.get_future().wait();
    };
    if (how != Releases::kInTheCallbackWhileTheLoaderIsLocked)
      dbi.insideLoad();
    else
      platform::FreeLibrary(platform::LoadLibraryExW(TARN_LOADING_MODULE, 0));
    finder.Reset();
  }
  unloaded.set_value();
  delivery.join();
  std::exit(callback.count == 1 && callback.references == 0 ? 0 : 1);
}

TEST_F(Reload, WhatIsUnloadedDuringADeliveryIsThereUntilItsThreadsHaveLeft) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const auto how :
       {Releases::kElsewhere, Releases::kInTheCallback, Releases::kInTheCallbackWhileTheLoaderIsLocked})
    for (int round = 0; round < 10; ++round)
      ASSERT_EXIT(UnloadDuringADelivery(dbi, how), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace wizard
