/// What the eight functions answer when they fail, are misused, or a scenario tells them to.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include "simulator/dbi_library.h"

namespace simulator {
namespace {

/// A whole conversation on a thread of its own, so that no earlier failure is left. One letter per call, in the order
/// of the calls below: "." success, "R" failure with a record, "-" without one. Error is the last description told.
std::string Converse(const DbiLibrary& dbi, std::string& error) {
  std::string results;
  std::thread([&] {
    Receiver receiver;
    const auto note = [&](std::uint8_t result) {
      const std::string last = result ? "none" : dbi.LastError();
      results += result ? '.' : last == "none" ? '-' : 'R';
      if (last != "none") error = last;
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
    EXPECT_TRUE(receiver.WaitForReferences(0));
  }).join();
  return results;
}

TEST(FunctionFault, StrikesTheCountedCall) {
  const struct {
    std::string faults;
    std::string results;  ///< of three conversations
    std::string error = "";
  } rows[] = {
      {R"({"function": "TarnServer_CreateLiveStream", "call": 2, "error": true})", "...... R ......",
       "The live stream was refused"},
      {R"({"function": "TarnServer_CreateLiveStream", "call": 1, "error": false})", "- ...... ......"},
      {R"({"function": "TarnLiveStream_Open", "call": 3, "error": {"description": "müde 京"}})", "...... ...... .R....",
       "müde 京"},
      {R"({"function": "TarnLiveStream_Start", "call": "every", "error": false},
          {"function": "TarnLiveStream_Open", "call": 2, "error": false})",
       "..-... .--... ..-..."},
      {R"({"function": "TarnLiveStream_SendSynchDSPCommand", "call": 2, "error": true})", "...... ....R ......",
       "The command was not answered"},
      {R"({"function": "TarnLiveStream_Open", "call": "every", "error": true},
          {"function": "TarnDBIGetLastError", "call": 2, "error": false})",
       ".R.... .-.... .R....", "The live stream cannot be opened"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.faults);
    const DbiLibrary dbi("{\"functionFaults\": [" + row.faults + "]}");
    std::string error;
    std::string results = Converse(dbi, error);
    for (int i = 0; i < 2; ++i) results += " " + Converse(dbi, error);
    EXPECT_EQ(results, row.results);
    EXPECT_EQ(error, row.error);
  }
}

TEST(Refusal, EachMisuseLeavesItsDescription) {
  const DbiLibrary dbi("{}");
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  auto* const nobody = reinterpret_cast<Tarn::TTarnLiveStream*>(std::uintptr_t{8});
  const StreamOpenParameters small = {16, 0, nullptr};
  void* reply = nullptr;
  std::uint32_t size = 0;
  Receiver receiver;
  const std::tuple<std::uint8_t, std::string, std::string> misuses[] = {
      {dbi.start(nobody), dbi.LastError(), "There is no such live stream"},
      {dbi.open(stream, &small, 0, nullptr, nullptr, 0), dbi.LastError(), "The parameters have another size"},
      {dbi.setCallback(stream, 2, &receiver), dbi.LastError(), "There is no such mode"},
      {dbi.setCallback(stream, kRegisterDataCallback, nullptr), dbi.LastError(), "There is no callback"},
      {dbi.send(stream, "\x0B\x84\0\0", 4, &reply, &size), dbi.LastError(), "not a finder request"},
      {dbi.send(stream, "\x0A\x84\0\0", 4, &reply, &size), dbi.LastError(), "The request holds no command"},
      {dbi.releaseReference(&size), dbi.LastError(), "There is no such reply"},
  };
  for (const auto& [result, description, expected] : misuses) {
    EXPECT_EQ(result, 0) << expected;
    EXPECT_EQ(description, expected);
  }
  dbi.destroy(nobody);
  dbi.destroy(stream);
}

TEST(LastError, BelongsToItsThreadAndHasAllTexts) {
  const DbiLibrary dbi(R"({"functionFaults": [
      {"function": "TarnLiveStream_Start", "call": 2,
       "error": {"class": 7, "code": 4711, "className": "Net", "additionalText": "channel 3"}}]})");
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  DBIErrorRecord record{};
  EXPECT_FALSE(dbi.start(stream));
  ASSERT_TRUE(dbi.getLastError(&record));
  std::thread([&] { EXPECT_EQ(dbi.LastError(), "none"); }).join();
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
  EXPECT_NE(dbi.LastError().find("scenario.json:2:10: speed: must be a number"), std::string::npos);
  const std::string path = std::getenv("TARN_SIMULATOR_SCENARIO");
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_FALSE(dbi.create(nullptr, &stream));
  EXPECT_EQ(dbi.LastError(), path + ": cannot be read; TARN_SIMULATOR_SCENARIO must name a scenario file");
  std::filesystem::remove(path);
  DbiLibrary::WriteScenario("{}");
  EXPECT_TRUE(dbi.create(nullptr, &stream));
  dbi.destroy(stream);
}

}  // namespace
}  // namespace simulator
