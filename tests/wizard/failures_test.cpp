/// Each function of the platform library failing, with and without an error record, through each operation of the
/// finder.
#include "wizard/finder_library.h"

namespace wizard {
namespace {

using scripted::Failure;
using scripted::Function;

constexpr char kRecordText[] =
    "Der Stream fehlt: K\xFC"
    "che";  // narrow texts are in the system's code page

/// What the wizard sees of an operation on a fresh finder: its answer, or the error's text.
template <class Call>
std::string Outcome(const FinderLibrary& library, Call call) {
  try {
    const auto finder = library.MakeFinder();
    return call(*finder.Get());
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

struct OperationRow {
  const char* name;
  std::string (*run)(ICameraFinder& finder);
};
const OperationRow kList = {"ListFoundCameras", [](ICameraFinder& finder) {
                              RecordingReceiver receiver;
                              finder.ListFoundCameras(&receiver);
                              return std::to_string(receiver.cameras.size()) + " cameras";
                            }};
const OperationRow kInstall = {"SetNewCameraDataCallback", [](ICameraFinder& finder) {
                                 static RecordingCallback callback;
                                 finder.SetNewCameraDataCallback(&callback);
                                 return std::string("ok");
                               }};
const OperationRow kMac = {"SendMacAddress", [](ICameraFinder& finder) {
                             finder.SendMacAddress(u"00:40:8C:00:00:01");
                             return std::string("ok");
                           }};
const OperationRow kInfo = {"RequestInfoByIp", [](ICameraFinder& finder) {
                              finder.RequestInfoByIp(u"10.0.0.5");
                              return std::string("ok");
                            }};
const OperationRow kBare = {"SendBareCommand", [](ICameraFinder& finder) {
                              finder.SendBareCommand();
                              return std::string("ok");
                            }};
const OperationRow kType1 = {"SendNetworkCommandType1", [](ICameraFinder& finder) {
                               JsonCamera camera(json::object());
                               camera.answersNull = true;
                               return std::to_string(finder.SendNetworkCommandType1(&camera));
                             }};
const OperationRow kType4 = {"SendNetworkCommandType4", [](ICameraFinder& finder) {
                               JsonCamera camera(json::object());
                               camera.answersNull = true;
                               return std::to_string(finder.SendNetworkCommandType4(&camera));
                             }};

struct FailureRow {
  const OperationRow* operation;
  Function function;
  Failure failure;
  const char* outcome;
  const char* calls;
};

constexpr Failure kRecord = Failure::kWithRecord, kNone = Failure::kWithoutRecord;
constexpr char kSendAll[] = "create open start send release destroy";

const FailureRow kRows[] = {
    // Without a channel nothing is sent, and that is no failure.
    {&kList, Function::kOpen, kRecord, "0 cameras", "create open destroy"},
    {&kList, Function::kStart, kRecord, "0 cameras", "create open start destroy"},
    {&kInstall, Function::kOpen, kRecord, "ok", "create open destroy"},
    {&kInstall, Function::kStart, kRecord, "ok", "create open start destroy"},
    {&kMac, Function::kOpen, kRecord, "ok", "create open destroy"},
    {&kInfo, Function::kStart, kRecord, "ok", "create open start destroy"},
    {&kBare, Function::kOpen, kRecord, "ok", "create open destroy"},
    {&kType1, Function::kOpen, kRecord, "1", "create open destroy"},
    {&kType4, Function::kStart, kRecord, "1", "create open start destroy"},
    // A failing command reaches the wizard where exceptions do, and its reply is released all the same.
    {&kList, Function::kSend, kRecord, kRecordText, kSendAll},
    {&kMac, Function::kSend, kRecord, "ok", kSendAll},
    {&kInfo, Function::kSend, kRecord, "ok", kSendAll},
    {&kBare, Function::kSend, kRecord, "ok", kSendAll},
    {&kType1, Function::kSend, kRecord, "0", kSendAll},
    {&kType4, Function::kSend, kRecord, "0", kSendAll},
    // A failing release never shows.
    {&kList, Function::kReleaseReply, kRecord, "3 cameras", kSendAll},
    {&kType1, Function::kReleaseReply, kRecord, "1", kSendAll},
    {&kMac, Function::kReleaseReply, kRecord, "ok", kSendAll},
    // A failing registration reaches the wizard, and there is nothing to unregister.
    {&kInstall, Function::kRegister, kRecord, kRecordText, "create open start register destroy"},
    // A failing creation leaves nothing to destroy.
    {&kBare, Function::kCreate, kRecord, kRecordText, "create"},
    // Without a record a failure counts as success.
    {&kList, Function::kOpen, kNone, "3 cameras", kSendAll},
    {&kList, Function::kStart, kNone, "3 cameras", kSendAll},
    {&kList, Function::kSend, kNone, "3 cameras", kSendAll},
    {&kList, Function::kReleaseReply, kNone, "3 cameras", kSendAll},
    {&kInstall, Function::kOpen, kNone, "ok", "create open start register unregister destroy"},
    {&kInstall, Function::kStart, kNone, "ok", "create open start register unregister destroy"},
    {&kInstall, Function::kRegister, kNone, "ok", "create open start register unregister destroy"},
    {&kInstall, Function::kUnregister, kNone, "ok", "create open start register unregister destroy"},
    {&kMac, Function::kSend, kNone, "ok", kSendAll},
    {&kInfo, Function::kSend, kNone, "ok", kSendAll},
    {&kType1, Function::kSend, kNone, "1", kSendAll},
    {&kType4, Function::kStart, kNone, "1", kSendAll},
    {&kBare, Function::kCreate, kNone, "ok", "create"},  // no handle: no channel, ever
};

class PlatformFailure : public WizardTest, public testing::WithParamInterface<FailureRow> {};

TEST_P(PlatformFailure, ReachesTheWizardAsStatedAndTheNextOperationWorks) {
  const FailureRow& row = GetParam();
  const FinderLibrary library;
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  dbi.Fail(row.function, row.failure);
  EXPECT_EQ(Outcome(library, [&](ICameraFinder& finder) { return row.operation->run(finder); }), row.outcome);
  EXPECT_EQ(dbi.Calls(), row.calls);

  dbi.Reset();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  EXPECT_EQ(Outcome(library, kList.run), "3 cameras");
}

INSTANTIATE_TEST_SUITE_P(Table, PlatformFailure, testing::ValuesIn(kRows), [](const auto& row) {
  return std::string(row.param.operation->name) + "_" + scripted::kNames[static_cast<int>(row.param.function)] +
         (row.param.failure == kRecord ? "_Record" : "_NoRecord");
});

TEST_F(PlatformFailure, AFailedReplacementLeavesTheInstalledCallback) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  RecordingCallback first, second;
  finder->SetNewCameraDataCallback(&first);
  dbi.Fail(Function::kRegister, kRecord);
  EXPECT_THROW(finder->SetNewCameraDataCallback(&second), std::exception);
  EXPECT_EQ(second.references, 0U);
  dbi.Push(3, ReadSample("block-3-camera.bin"));
  EXPECT_EQ(first.Count(), 1U);
  EXPECT_EQ(dbi.Calls(), "create open start register register");
}

TEST_F(PlatformFailure, AFailedOpeningIsTriedAgain) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  dbi.Fail(Function::kStart, kRecord);
  finder->SendBareCommand();
  dbi.Reset();
  finder->SendBareCommand();
  EXPECT_EQ(dbi.Calls(), "open start send release");
}

TEST_F(PlatformFailure, AFailedUnregistrationEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(
      {
        const FinderLibrary library;
        const auto finder = library.MakeFinder();
        RecordingCallback callback;
        finder->SetNewCameraDataCallback(&callback);
        GetScriptedDbi()->Fail(Function::kUnregister, kRecord);
      },
      "");
}

}  // namespace
}  // namespace wizard
