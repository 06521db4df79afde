/// Objects, references, the order of calls to the platform library, and wizards that vanish in the middle of it.
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Lifecycle = WizardTest;

TEST_F(Lifecycle, AFreshFinderHasOneReferenceAndAnswersItsOwnInterfaceOnly) {
  const FinderLibrary library;
  library.getFindingInterface(kServer, kChannel, nullptr);
  EXPECT_EQ(dbi.Calls(), "");
  ICameraFinder* const finder = library.MakeFinder().Detach();
  void* object = nullptr;
  EXPECT_EQ(finder->QueryInterface(Tarn::CameraFinding::IID_ICameraInfo, &object), E_NOINTERFACE);
  EXPECT_EQ(finder->QueryInterface(Tarn::CameraFinding::IID_ICameraFinder, &object), S_OK);
  EXPECT_EQ(object, finder);
  EXPECT_EQ(finder->Release(), 1U);
  EXPECT_EQ(finder->Release(), 0U);
  EXPECT_EQ(dbi.Calls(), "create destroy");
}

TEST_F(Lifecycle, TheStreamIsOpenedOnceAndGoesLast) {
  const FinderLibrary library;
  CountingCallback first, second;
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
  EXPECT_EQ(dbi.Locked()->script.channelArgument, kChannel);
  EXPECT_EQ(second.references, 0U);
}

TEST_F(Lifecycle, ANullTextCountsAsEmpty) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  for (const auto send : {&ICameraFinder::SendMacAddress, &ICameraFinder::RequestInfoByIp}) {
    (finder.Get()->*send)(u"");
    const Bytes empty = dbi.LastRequest();
    (finder.Get()->*send)(u"10.0.0.5");
    EXPECT_NE(dbi.LastRequest(), empty);
    (finder.Get()->*send)(nullptr);
    EXPECT_EQ(dbi.LastRequest(), empty);
  }
}

TEST_F(Lifecycle, AThrowingReceiverLeavesListFoundCamerasAndGetsNoFurtherCamera) {
  struct Receiver : RecordingReceiver {
    HRESULT CameraFound(ICameraInfo* camera) override {
      RecordingReceiver::CameraFound(camera);
      throw std::runtime_error("receiver");
    }
  } receiver;
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  EXPECT_THROW(finder->ListFoundCameras(&receiver), std::runtime_error);
  EXPECT_EQ(receiver.cameras.size(), 1U);
  EXPECT_EQ(receiver.kept.at(0)->Release(), 0U) << "of the test's own reference";
  receiver.kept.at(0).Detach();
}

/// What the wizard does inside a callback, while the platform library's thread waits.
struct InsideRow {
  const char* name;
  std::function<void(scripted::Dbi&, ComPtr<ICameraFinder>&, CountingCallback&)> action;
  const char* calls;
  std::uint32_t references = 2;
};
class InsideACallback : public WizardTest, public testing::WithParamInterface<InsideRow> {};

TEST_P(InsideACallback, RunsOnAWorkerBeforeTheDeliveryReturnsAndDeadlocksNothing) {
  const FinderLibrary library;
  auto finder = library.MakeFinder();
  CountingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  dbi.ForgetCalls();
  bool once = true, finished = false;
  callback.inside = [&, platformThread = std::this_thread::get_id()] {
    if (!std::exchange(once, false)) return;
    EXPECT_NE(std::this_thread::get_id(), platformThread);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    finished = true;
    GetParam().action(dbi, finder, callback);
    EXPECT_EQ(callback.references, GetParam().references) << "of the task, and of the receiver unless it is detached";
  };
  // As a platform library that holds no reference of its own while it calls.
  const Bytes block = SampleOfType(3);
  IGenericDataReceivedCallback* const receiver = dbi.Locked()->receivers.back().receiver;
  receiver->OnGenericData(2, 3, block.data(), block.size());
  EXPECT_TRUE(finished);
  finder.Reset();
  EXPECT_EQ(dbi.Calls(), GetParam().calls);
  EXPECT_EQ(callback.references, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Wizard, InsideACallback,
    testing::Values(
        InsideRow{"ReleasesTheFinder", [](auto&, auto& finder, auto&) { finder.Reset(); }, "unregister destroy"},
        InsideRow{"IsDetached", [](auto& dbi, auto&, auto&) { dbi.Detach(); }, "unregister destroy", 1},
        InsideRow{"ReplacesItself", [](auto&, auto& finder, auto&) { finder->SetNewCameraDataCallback(nullptr); },
                  "register unregister unregister destroy"},
        InsideRow{"CausesAnotherDelivery",
                  [](auto& dbi, auto&, auto& callback) {
                    dbi.Push(3, SampleOfType(3));
                    EXPECT_EQ(callback.count, 2);
                  },
                  "unregister destroy"},
        InsideRow{"Throws", [](auto&, auto&, auto&) { throw std::runtime_error("wizard"); }, "unregister destroy"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace wizard
