/// Objects, references, the order of calls to the platform library, and wizards that vanish in the middle of it.
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Lifecycle = WizardTest;

const Bytes& CameraBlock() {
  static const Bytes block = ReadSample("block-3-camera.bin");
  return block;
}

TEST_F(Lifecycle, ANullOutputCreatesNothing) {
  const FinderLibrary library;
  library.getFindingInterface(kServer, kChannel, nullptr);
  EXPECT_EQ(dbi.Calls(), "");
}

TEST_F(Lifecycle, AFreshFinderHasOneReferenceAndAnswersItsOwnInterfaceOnly) {
  const FinderLibrary library;
  ICameraFinder* const finder = library.MakeFinder().Detach();
  void* object = nullptr;
  for (const IID& id : {IID_IUnknown, Tarn::CameraFinding::IID_ICameraFinder}) {
    EXPECT_EQ(finder->QueryInterface(id, &object), S_OK);
    EXPECT_EQ(object, finder);
    EXPECT_EQ(finder->Release(), 1U);
  }
  const IID other = {0x12345678, 0, 0, {1}};
  for (const IID& id : {Tarn::CameraFinding::IID_ICameraInfo, IID_IGenericDataReceivedCallback, other}) {
    object = this;
    EXPECT_EQ(finder->QueryInterface(id, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
  }
  EXPECT_EQ(finder->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(finder->AddRef(), 2U);
  EXPECT_EQ(finder->Release(), 1U);
  EXPECT_EQ(finder->Release(), 0U);
  EXPECT_EQ(dbi.Calls(), "create destroy");
}

TEST_F(Lifecycle, TheStreamIsOpenedOnceAndGoesLast) {
  const FinderLibrary library;
  RecordingCallback first, second;
  {
    const auto finder = library.MakeFinder();
    finder->SendBareCommand();
    finder->SetNewCameraDataCallback(&first);
    finder->SetNewCameraDataCallback(&second);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(second.references, 1U);
    finder->SendMacAddress(u"00");
  }
  EXPECT_EQ(dbi.Calls(), "create open start send release register register unregister send release unregister destroy");
  EXPECT_EQ(dbi.ChannelArgument(), kChannel);
  EXPECT_EQ(second.references, 0U);
}

TEST_F(Lifecycle, AReceiverKeepsACameraByItsOwnReference) {
  struct Keeper : OwnedByTest<IFoundCameraReceiver> {
    HRESULT CameraFound(ICameraInfo* camera) override {
      kept.emplace_back(camera);
      return E_POINTER;  // ignored
    }
    std::vector<ComPtr<ICameraInfo>> kept;
  } keeper;
  {
    const FinderLibrary library;
    dbi.SetReply(ReadSample("reply-list-3.bin"));
    {
      const auto finder = library.MakeFinder();
      finder->ListFoundCameras(nullptr);  // asks, and hands nothing over
      finder->ListFoundCameras(&keeper);
    }
    ASSERT_EQ(keeper.kept.size(), 3U);
    ICameraInfo& camera = *keeper.kept[1].Get();
    camera.SetCredentials(u"Jürgen", nullptr);
    camera.SetNetworkSettings(u"10.0.0.1", nullptr, 7, u"");
    const json changed = CameraAsJson(camera);
    EXPECT_EQ(changed["user"], "Jürgen");
    EXPECT_EQ(changed["password"], "");
    EXPECT_EQ(changed["ip"], "10.0.0.1");
    EXPECT_EQ(changed["subnetMask"], "");
    EXPECT_EQ(changed["gateway"], "");
    EXPECT_EQ(changed["dhcp"], false);
    EXPECT_EQ(camera.Release(), 0U);
    std::ignore = keeper.kept[1].Detach();
    keeper.kept.clear();
  }
}

TEST_F(Lifecycle, ADeliveryReturnsAfterTheWizardAndNeverOnItsThread) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  RecordingCallback callback;
  std::thread::id worker;
  bool finished = false;
  callback.onCamera = [&] {
    worker = std::this_thread::get_id();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    finished = true;
  };
  finder->SetNewCameraDataCallback(&callback);
  dbi.Push(3, CameraBlock());
  EXPECT_TRUE(finished);
  EXPECT_NE(worker, std::this_thread::get_id());
}

/// What the wizard does inside a callback, while the platform library's thread waits.
struct InsideRow {
  const char* name;
  std::function<void(scripted::Dbi&, ComPtr<ICameraFinder>&, RecordingCallback&)> action;
  const char* calls;
};
class InsideACallback : public WizardTest, public testing::WithParamInterface<InsideRow> {};

TEST_P(InsideACallback, NothingDeadlocksOrIsFreedTooEarly) {
  const FinderLibrary library;
  auto finder = library.MakeFinder();
  RecordingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  dbi.ForgetCalls();
  bool once = true;
  callback.onCamera = [&] {
    if (!std::exchange(once, false)) return;
    GetParam().action(dbi, finder, callback);
    EXPECT_GE(callback.references, 1U) << "the task holds a reference of its own";
  };
  dbi.Push(3, CameraBlock());
  finder.Reset();
  EXPECT_EQ(dbi.Calls(), GetParam().calls);
  EXPECT_EQ(callback.references, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Wizard, InsideACallback,
    testing::Values(
        InsideRow{"ReleasesTheFinder", [](auto&, auto& finder, auto&) { finder.Reset(); }, "unregister destroy"},
        InsideRow{"IsDetached", [](auto& dbi, auto&, auto&) { dbi.Detach(); }, "unregister destroy"},
        InsideRow{"ReplacesItself", [](auto&, auto& finder, auto&) { finder->SetNewCameraDataCallback(nullptr); },
                  "register unregister unregister destroy"},
        InsideRow{"SendsACommand", [](auto&, auto& finder, auto&) { finder->SendBareCommand(); },
                  "send release unregister destroy"},
        InsideRow{"CausesAnotherDelivery",
                  [](auto& dbi, auto&, auto& callback) {
                    dbi.Push(3, CameraBlock());
                    EXPECT_EQ(callback.Count(), 2U);
                  },
                  "unregister destroy"},
        InsideRow{"Throws", [](auto&, auto&, auto&) { throw std::runtime_error("wizard"); }, "unregister destroy"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Lifecycle, AfterOnDetachBlocksAreDropped) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  RecordingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  dbi.Detach();
  EXPECT_EQ(callback.references, 0U);
  dbi.Push(3, CameraBlock());
  dbi.Detach();
  EXPECT_EQ(callback.Count(), 0U);
}

TEST_F(Lifecycle, TheLastReleaseOnAnotherThreadWaitsForNothingAndFreesNothingInUse) {
  const FinderLibrary library;
  auto finder = library.MakeFinder();
  RecordingCallback callback;
  std::promise<void> entered, mayLeave;
  callback.onCamera = [&] {
    entered.set_value();
    mayLeave.get_future().wait();
  };
  finder->SetNewCameraDataCallback(&callback);
  std::thread delivery([&] { dbi.Push(3, CameraBlock()); });
  entered.get_future().wait();
  finder.Reset();
  EXPECT_EQ(dbi.Calls(), "create open start register unregister destroy");
  EXPECT_GE(callback.references, 1U);
  mayLeave.set_value();
  delivery.join();
  EXPECT_EQ(callback.references, 0U);
}

}  // namespace
}  // namespace wizard
