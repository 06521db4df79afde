/// What the eight functions answer when they fail, are misused, or a scenario tells them to.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "simulator/dbi_library.h"

namespace simulator {
namespace {

/// A whole conversation on a thread of its own, so that no earlier failure is left. One letter per call, in the order
/// of the table below: "." success, "R" failure with a record, "-" without one.
std::string Converse(const DbiLibrary& dbi, std::string* error = nullptr) {
  std::string results;
  std::thread([&] {
    Receiver receiver;
    const auto note = [&](std::uint8_t result) {
      const std::string last = result ? "none" : dbi.LastError();
      results += result ? '.' : last == "none" ? '-' : 'R';
      if (error && last != "none") *error = last;
    };
    const StreamOpenParameters parameters = {sizeof parameters, 0, nullptr};
    Tarn::TTarnLiveStream* stream = nullptr;
    void* reply = nullptr;
    note(dbi.create(nullptr, &stream));
    if (!stream) return;
    note(dbi.open(stream, &parameters, 0, nullptr, nullptr, 0));
    note(dbi.start(stream));
    note(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
    note(dbi.Send(stream, "request-list.bin", &reply));
    if (reply) note(dbi.releaseReference(reply));
    dbi.destroy(stream);
    EXPECT_TRUE(receiver.WaitUntilReleased());
  }).join();
  return results;
}

struct FaultRow {
  const char* name;
  std::string faults;
  std::string first, second, third;  ///< results of three conversations
  std::string error = "";            ///< the last description that was told
};
class FunctionFault : public testing::TestWithParam<FaultRow> {};
TEST_P(FunctionFault, StrikesTheCountedCall) {
  const FaultRow& row = GetParam();
  const DbiLibrary dbi("{\"functionFaults\": [" + row.faults + "]}");
  std::string error;
  EXPECT_EQ(Converse(dbi, &error), row.first);
  EXPECT_EQ(Converse(dbi, &error), row.second);
  EXPECT_EQ(Converse(dbi, &error), row.third);
  EXPECT_EQ(error, row.error);
}
INSTANTIATE_TEST_SUITE_P(
    , FunctionFault,
    testing::ValuesIn(std::vector<FaultRow>{
        {"None", "", "......", "......", "......"},
        {"Create", R"({"function": "TarnServer_CreateLiveStream", "call": 2, "error": true})", "......", "R", "......",
         "The live stream was refused"},
        {"CreateSilently", R"({"function": "TarnServer_CreateLiveStream", "call": 1, "error": false})", "-", "......",
         "......"},
        {"Open", R"({"function": "TarnLiveStream_Open", "call": 3, "error": {"description": "müde 京"}})", "......",
         "......", ".R....", "müde 京"},
        {"StartAndOpen",
         R"({"function": "TarnLiveStream_Start", "call": "every", "error": false},
            {"function": "TarnLiveStream_Open", "call": 2, "error": false})",
         "..-...", ".--...", "..-..."},
        {"Register", R"({"function": "TarnLiveStream_SetGenericDataCallback", "call": 1, "error": true})", "...R..",
         "......", "......", "The data callback was refused"},
        {"Send", R"({"function": "TarnLiveStream_SendSynchDSPCommand", "call": 2, "error": true})", "......", "....R",
         "......", "The command was not answered"},
        {"Release", R"({"function": "TarnDBI_ReleaseReference", "call": 1, "error": true})", ".....R", "......",
         "......", "The reply cannot be released"},
        {"LastError",
         R"({"function": "TarnLiveStream_Open", "call": "every", "error": true},
            {"function": "TarnDBIGetLastError", "call": 2, "error": false})",
         ".R....", ".-....", ".R....", "The live stream cannot be opened"},
        {"DestroyEndsTheStreamAllTheSame", R"({"function": "TarnLiveStream_Destroy", "call": "every", "error": true})",
         "......", "......", "......"},
    }),
    [](const auto& row) { return row.param.name; });

TEST(Refusal, EachMisuseLeavesItsDescription) {
  const DbiLibrary dbi("{}");
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  auto* const nobody = reinterpret_cast<Tarn::TTarnLiveStream*>(std::uintptr_t{8});
  const StreamOpenParameters small = {16, 0, nullptr};
  void* reply = nullptr;
  std::uint32_t size = 0;
  Receiver receiver;
  EXPECT_EQ(dbi.LastError(), "none");
  const std::pair<std::uint8_t, std::string> misuses[] = {
      {dbi.start(nullptr), dbi.LastError()},
      {dbi.start(nobody), dbi.LastError()},
      {dbi.open(stream, &small, 0, nullptr, nullptr, 0), dbi.LastError()},
      {dbi.setCallback(stream, 2, &receiver), dbi.LastError()},
      {dbi.setCallback(stream, kRegisterDataCallback, nullptr), dbi.LastError()},
      {dbi.send(stream, "\x0B\x84\0\0", 4, &reply, &size), dbi.LastError()},
      {dbi.send(stream, "\x0A\x84\0", 3, &reply, &size), dbi.LastError()},
      {dbi.send(stream, "\x0A\x84\0\0", 4, &reply, &size), dbi.LastError()},
      {dbi.send(stream, "\x0A\x84\0\0V\0k\0x\0J\0", 12, &reply, &size), dbi.LastError()},
      {dbi.releaseReference(&size), dbi.LastError()},
  };
  std::string descriptions;
  for (const auto& [result, description] : misuses) {
    EXPECT_EQ(result, 0) << description;
    descriptions += description + "\n";
  }
  EXPECT_EQ(descriptions,
            "There is no such live stream\nThere is no such live stream\nThe parameters have another size\n"
            "There is no such mode\nThere is no callback\nnot a finder request\n"
            "read failed - not enough bytes in buffer\nThe request holds no command\n"
            "read failed - not enough bytes in buffer\nThere is no such reply\n");
  dbi.destroy(nobody);
  dbi.destroy(stream);
}

TEST(LastError, BelongsToItsThreadAndHasAllTexts) {
  const DbiLibrary dbi(R"({"functionFaults": [
      {"function": "TarnLiveStream_Start", "call": 2,
       "error": {"class": 7, "code": 4711, "className": "Net", "additionalText": "channel 3"}},
      {"function": "TarnLiveStream_Start", "call": 3, "error": true}]})");
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  DBIErrorRecord record{};
  EXPECT_FALSE(dbi.start(stream));
  ASSERT_TRUE(dbi.getLastError(&record));
  std::thread([&] {
    EXPECT_EQ(dbi.LastError(), "none");
    EXPECT_FALSE(dbi.start(stream));
    DBIErrorRecord other{};
    ASSERT_TRUE(dbi.getLastError(&other));
    EXPECT_EQ(std::string(other.className) + "/" + other.additionalText, "TarnDBI/");
    EXPECT_EQ(other.errorCode, 100U);
  }).join();
  EXPECT_TRUE(dbi.start(stream));
  EXPECT_EQ(record.errorClass, 7U);
  EXPECT_EQ(record.errorCode, 4711U);
  EXPECT_EQ(std::string(record.className) + "/" + record.additionalText, "Net/channel 3");
  EXPECT_EQ(std::u16string(record.description), u"The live stream cannot be started");
  dbi.destroy(stream);
}

TEST(ScenarioFile, IsReadForEachStreamAndAMistakeIsWhatCreateTells) {
  const DbiLibrary dbi("{\n\"speed\": true}");
  Tarn::TTarnLiveStream* stream = nullptr;
  EXPECT_FALSE(dbi.create(nullptr, &stream));
  const std::string error = dbi.LastError();
  EXPECT_NE(error.find("scenario.json:2: speed: must be a number"), std::string::npos) << error;
  DbiLibrary::WriteScenario("{}");
  EXPECT_TRUE(dbi.create(nullptr, &stream));
  dbi.destroy(stream);
  DbiLibrary::WriteScenario("{");
  EXPECT_FALSE(dbi.create(nullptr, &stream));
}

}  // namespace
}  // namespace simulator
