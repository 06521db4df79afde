#include <gtest/gtest.h>

#include <string>

#include "capture/test_captures.h"
#include "simulator/functions.h"
#include "simulator/recorded_conversation.h"
#include "simulator/scenario_reader.h"
#include "simulator/world.h"

namespace simulator {
namespace {

std::string MistakeIn(std::string_view text) {
  try {
    ReadScenario(text, "s.json");
    return "none";
  } catch (const ScenarioMistake& mistake) {
    return mistake.what();
  }
}

/// A scenario with the camera "a", these further members of it, and more cameras. OneEvent: with an event of these
/// members before the camera.
std::string Camera(const std::string& members, const std::string& more = "") {
  return R"({"cameras": [{"name": "a", "mac": "00:40:8C:00:00:01")" + members + "}" + more + "]}";
}
std::string OneEvent(const std::string& members) {
  return R"({"events": [{"atMs": 1, )" + members + "}],\n" + Camera("").substr(1);
}

TEST(ScenarioMistakes, AreOneLineWithFileLineColumnAndKey) {
  const std::pair<std::string, std::string> rows[] = {
      {"",
       "1:1: top level: this is not JSON: syntax error while parsing value - unexpected end of input; expected '[', "
       "'{', or a literal"},
      {"{\"seed\": 1,\n\n\"speed\"",
       "3:8: speed: this is not JSON: syntax error while parsing object separator - unexpected end of input; expected "
       "':'"},
      {"{\n\"generate\": {\"count\": 1.5}}", "2:23: generate.count: must be a whole number from 1 to 100000"},
      {"{\n\n\"colour\": 3}",
       "3:1: colour: is no key of this object; the keys are $schema, seed, speed, cameras, generate, events, "
       "functionFaults, blockFaults"},
      {"{\"seed\": 1,\n\"seed\": 2}", "2:1: seed: is given twice"},
      {"{\"seed\":\n[[[[[[[[[[]]]]]]]]]]}",
       "2:8: seed[0][0][0][0][0][0][0]: is nested too deeply; no scenario has more than 5 levels"},
      {"{\"speed\": 1001}", "1:11: speed: must be a number from 0.001 to 1000, or \"instant\""},
      {"{\"cameras\": [\n{\"name\": \"a\"}]}", "2:1: cameras[0].mac: is missing"},
      {Camera("", ", {\"name\": \"b\",\n\"mac\": \"00:40:8C:00:00:0G\"}"),
       "2:8: cameras[1].mac: must be a hardware address such as 00:40:8C:12:34:56"},
      {Camera(",\n\"ip\": \"10.0.0.256\""), "2:7: cameras[0].ip: must be an IP address such as 10.0.0.5, or empty"},
      {Camera("", ",\n{\"name\": \"b\",\n\"mac\": \"00:40:8c:00:00:01\"}"),
       "3:8: cameras[1].mac: another camera has the hardware address 00:40:8C:00:00:01"},
      {"{\"generate\":\n{\"count\": 100000}," + Camera("").substr(1),
       "2:1: generate: there are more than 100000 cameras in all"},
      {OneEvent("\"event\": \"found\",\n\"camera\": \"b\""),
       "2:11: events[0].camera: there is no camera of the name b"},
      {OneEvent("\"event\": \"lost\", \"camera\": \"a\""),
       "1:34: events[0].event: must be one of picture, values, reported, changed, found, seen, assembled, gone"},
      {OneEvent("\"event\": \"gone\", \"camera\": \"a\", \"set\": {\"ctt\": 1}"),
       "1:64: events[0].set: only events that carry a camera's record can change it"},
      {"{\"functionFaults\": [{\"call\": 1, \"function\": \"TarnLiveStream_Stop\"}]}",
       "1:45: functionFaults[0].function: must be one of TarnServer_CreateLiveStream, TarnLiveStream_Open, "
       "TarnLiveStream_Start, TarnLiveStream_SetGenericDataCallback, TarnLiveStream_SendSynchDSPCommand, "
       "TarnDBI_ReleaseReference, TarnLiveStream_Destroy, TarnDBIGetLastError"},
      {"{\"seed\": 1e400}", "1:14: seed: this is not JSON: number overflow parsing '1e400'"},
      {"{\"$schema\": \"ü\\ud800\"}",
       "1:21: $schema: this is not JSON: syntax error while parsing value - invalid string: surrogate U+D800..U+DBFF "
       "must "
       "be followed by U+DC00..U+DFFF; last read: '\"ü\\ud800\"'"},
      {"{\"functionFault\": []}", "1:2: functionFault: is no key of this object; did you mean \"functionFaults\"?"},
      {Camera(", \"modle\": \"x\""), "1:56: cameras[0].modle: is no key of this object; did you mean \"model\"?"},
      {"{\"functionFaults\": [{\"call\": 1, \"function\": \"TarnLiveStream_Open\"}]}",
       "1:21: functionFaults[0]: does nothing; give \"error\", or \"delayMs\" in a scenario that is not instant"},
      {"{\"speed\": \"instant\", \"blockFaults\": [{\"block\": 1, \"delayMs\": 5}]}",
       "1:38: blockFaults[0]: does nothing; give \"cutAt\", \"alterAt\", or \"delayMs\" in a scenario that is not "
       "instant"},
      {"{\"blockFaults\": [{\"block\": 1, \"cutAt\": 5, \"alterMask\": 1}]}",
       "1:56: blockFaults[0].alterMask: does nothing without \"alterAt\""},
  };
  for (const auto& [text, line] : rows) EXPECT_EQ(MistakeIn(text), "s.json:" + line);
}

/// Frozen: another system, compiler or library must come to the same bytes.
TEST(GeneratedWorld, ASeedMakesTheSameBlocksEverywhere) {
  World world(std::make_shared<const Scenario>(ReadScenario(R"({"seed": 5, "generate":
      {"count": 300, "pictures": true, "changedPercent": 30, "gonePercent": 30}})",
                                                            "s.json")));
  std::uint64_t digest = 0xCBF29CE484222325;  // FNV-1a
  while (world.NextBlockTime())
    for (const std::uint8_t byte : world.TakeBlock().bytes) digest = (digest ^ byte) * 0x100000001B3;
  EXPECT_EQ(digest, 0x77C33AF381B92AB4U);
}

TEST(RecordedConversation, HasNoStreamForOneThatWasRefused) {
  capture::MemorySink sink;
  capture::FrameWriter writer(sink);
  writer.WriteSectionStart();
  for (const bool created : {false, true}) {
    capture::FrameHeader header;
    header.function = static_cast<std::uint8_t>(Function::kCreateLiveStream);
    header.result = created;
    writer.WriteFrame(header, 0, {});
  }
  const std::string capture(sink.bytes.begin(), sink.bytes.end());
  EXPECT_EQ(ReadRecordedConversation(capture, "c.pcapng", 1).recording->size(), 1U);
}

}  // namespace
}  // namespace simulator
