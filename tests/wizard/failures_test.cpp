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
std::string Outcome(const std::string& operation) {
  const FinderLibrary library;
  std::string outcome = "ok";
  JsonCamera camera(json::object());
  camera.throws = operation == "Throw";
  RecordingCallback callback;
  RecordingReceiver receiver;
  try {
    const auto finder = library.MakeFinder();
    if (operation == "List") finder->ListFoundCameras(&receiver);
    if (operation == "Install") {
      finder->SetNewCameraDataCallback(&callback);
      outcome = callback.references ? "installed" : "no reference";
    }
    if (operation == "Mac") finder->SendMacAddress(u"00:40:8C:00:00:01");
    if (operation == "Info") finder->RequestInfoByIp(u"10.0.0.5");
    if (operation == "Bare") finder->SendBareCommand();
    if (operation == "Type1") return std::to_string(finder->SendNetworkCommandType1(&camera));
    if (operation == "Throw" || operation == "Type4") return std::to_string(finder->SendNetworkCommandType4(&camera));
  } catch (const std::exception& exception) {
    return exception.what();
  }
  return operation == "List" ? std::to_string(receiver.cameras.size()) + " cameras" : outcome;
}

struct FailureRow {
  const char* operation;
  Function function;
  Failure failure;
  const char* outcome;
  const char* calls;
};

constexpr Failure kRecord = Failure::kWithRecord, kNone = Failure::kWithoutRecord;
constexpr char kSendAll[] = "create open start send release destroy";

const FailureRow kRows[] = {
    // Without a channel nothing is sent, and that is no failure.
    {"List", Function::kOpen, kRecord, "0 cameras", "create open destroy"},
    {"List", Function::kStart, kRecord, "0 cameras", "create open start destroy"},
    {"Install", Function::kOpen, kRecord, "no reference", "create open destroy"},
    {"Bare", Function::kOpen, kRecord, "ok", "create open destroy"},
    {"Type1", Function::kOpen, kRecord, "1", "create open destroy"},
    {"Type4", Function::kStart, kRecord, "1", "create open start destroy"},
    // A failing command reaches the wizard where exceptions do, and its reply is released all the same.
    {"List", Function::kSend, kRecord, kRecordText, kSendAll},
    {"Mac", Function::kSend, kRecord, "ok", kSendAll},
    {"Type1", Function::kSend, kRecord, "0", kSendAll},
    {"Type4", Function::kSend, kRecord, "0", kSendAll},
    {"Throw", Function::kSend, kRecord, "0", "create destroy"},  // the wizard's camera throws, and nothing is sent
    // A failing release never shows.
    {"List", Function::kReleaseReply, kRecord, "3 cameras", kSendAll},
    // A failing registration reaches the wizard, and there is nothing to unregister.
    {"Install", Function::kRegister, kRecord, kRecordText, "create open start register destroy"},
    // A failing creation leaves nothing to destroy.
    {"Bare", Function::kCreate, kRecord, kRecordText, "create"},
    // Without a record a failure counts as success.
    {"List", Function::kOpen, kNone, "3 cameras", kSendAll},
    {"List", Function::kSend, kNone, "3 cameras", kSendAll},
    {"Install", Function::kRegister, kNone, "installed", "create open start register unregister destroy"},
    {"Install", Function::kUnregister, kNone, "installed", "create open start register unregister destroy"},
    {"Bare", Function::kCreate, kNone, "ok", "create"},  // no handle: no channel, ever
};

class PlatformFailure : public WizardTest, public testing::WithParamInterface<FailureRow> {};

TEST_P(PlatformFailure, ReachesTheWizardAsStatedAndTheNextOperationWorks) {
  const FailureRow& row = GetParam();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  dbi.Fail(row.function, row.failure);
  EXPECT_EQ(Outcome(row.operation), row.outcome);
  EXPECT_EQ(dbi.Calls(), row.calls);

  dbi.Reset();
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  EXPECT_EQ(Outcome("List"), "3 cameras");
}

INSTANTIATE_TEST_SUITE_P(Table, PlatformFailure, testing::ValuesIn(kRows), [](const auto& row) {
  return std::string(row.param.operation) + "_" + scripted::kNames[static_cast<int>(row.param.function)] +
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
  EXPECT_EQ(first.Delivered().size(), 1U);
}

TEST_F(PlatformFailure, AReplyWithASizeAloneIsNone) {
  dbi.SetReply(Bytes(8));
  dbi.Locked()->script.hidesReply = true;
  EXPECT_EQ(Outcome("List"), "0 cameras");
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
