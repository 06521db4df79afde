#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "simulator/scenario_reader.h"
#include "simulator/world.h"

namespace simulator {
namespace {

using nlohmann::json;

std::string MistakeIn(std::string_view text) {
  try {
    ReadScenario(text, "s.json");
    return "none";
  } catch (const ScenarioMistake& mistake) {
    return mistake.what();
  }
}

/// Rows are texts with the cameras a and, where it says so, one event of it around them.
std::string Camera(const std::string& members, const std::string& more = "") {
  return R"({"cameras": [{"name": "a", "mac": "00:40:8C:00:00:01")" + members + "}" + more + "]}";
}
std::string OneEvent(const std::string& members) {
  return R"({"events": [{"atMs": 1, )" + members + "}],\n" + Camera("").substr(1);
}

struct Mistake {
  const char* name;
  std::string text;
  std::string line;  ///< behind the file's name
};
class ScenarioMistakes : public testing::TestWithParam<Mistake> {};
TEST_P(ScenarioMistakes, AreOneLineWithFileLineAndKey) {
  EXPECT_EQ(MistakeIn(GetParam().text), "s.json:" + GetParam().line);
}
INSTANTIATE_TEST_SUITE_P(
    , ScenarioMistakes,
    testing::ValuesIn(std::vector<Mistake>{
        {"Nothing", "", "1: top level: this is not JSON, near ''"},
        {"Cut", "{\"seed\": 1,\n\n\"speed\"", "3: speed: this is not JSON, near '\"speed\"'"},
        {"NumberBeforeLineBreak", "{\"seed\": -1\n}", "1: seed: must be a whole number from 0 to 18446744073709551615"},
        {"NumberWithFraction", "{\n\"generate\": {\"count\": 1.5}}",
         "2: generate.count: must be a whole number from 1 to 100000"},
        {"TopLevelList", "[]", "1: top level: must be an object"},
        {"UnknownKey", "{\n\n\"colour\": 3}", "3: colour: is no key of this object"},
        {"KeyTwice", "{\"seed\": 1,\n\"seed\": 2}", "2: seed: is given twice"},
        {"TooDeep", "{\"seed\":\n[[[[[[[[[[]]]]]]]]]]}", "2: seed[0][0][0][0][0][0][0]: is nested too deeply"},
        {"SpeedTooHigh", "{\"speed\": 1001}", "1: speed: must be a number from 0.001 to 1000, or \"instant\""},
        {"NoMac", "{\"cameras\": [\n{\"name\": \"a\"}]}", "2: cameras[0].mac: is missing"},
        {"BadMac", Camera("", ", {\"name\": \"b\",\n\"mac\": \"00:40:8C:00:00:0G\"}"),
         "2: cameras[1].mac: must be a hardware address such as 00:40:8C:12:34:56"},
        {"BadIp", Camera(",\n\"ip\": \"10.0.0.256\""),
         "2: cameras[0].ip: must be an IP address such as 10.0.0.5, or empty"},
        {"BadMask", Camera(",\n\"deviceFlags\": \"0x100000000\""),
         "2: cameras[0].deviceFlags: must be a number up to 4294967295, or its hexadecimal form such as \"0x40\""},
        {"BadElement", Camera(", \"plugins\": [\"A\",\n2]"), "2: cameras[0].plugins[1]: must be a text"},
        {"SameMacInLowerCase", Camera("", ",\n{\"name\": \"b\",\n\"mac\": \"00:40:8c:00:00:01\"}"),
         "3: cameras[1].mac: another camera has the hardware address 00:40:8C:00:00:01"},
        {"TooManyInAll", "{\"generate\":\n{\"count\": 100000}," + Camera("").substr(1),
         "2: generate: there are more than 100000 cameras in all"},
        {"EventOfNobody", OneEvent("\"event\": \"found\",\n\"camera\": \"b\""),
         "2: events[0].camera: there is no camera of the name b"},
        {"UnknownEvent", OneEvent("\"event\": \"lost\", \"camera\": \"a\""),
         "1: events[0].event: must be one of picture, values, reported, changed, found, seen, assembled, gone"},
        {"SetOfMac", OneEvent("\"event\": \"seen\", \"camera\": \"a\",\n\"set\": {\n\"mac\": \"00:40:8C:00:00:02\"}"),
         "3: events[0].set.mac: is no key of this object"},
        {"SetWithoutRecord", OneEvent("\"event\": \"gone\", \"camera\": \"a\", \"set\": {\"ctt\": 1}"),
         "1: events[0].set: only events that carry a camera's record can change it"},
        {"FaultOfNinthFunction", "{\"functionFaults\": [{\"call\": 1, \"function\": \"TarnLiveStream_Stop\"}]}",
         "1: functionFaults[0].function: must be one of the eight functions, such as TarnLiveStream_Open"},
        {"FaultAtBlockZero", "{\"blockFaults\": [{\"block\": 0}]}",
         "1: blockFaults[0].block: must be a whole number from 1 to 18446744073709551615"},
    }),
    [](const auto& row) { return row.param.name; });

TEST(ScenarioRead, EventsAreSortedByTimeAndThenAsWritten) {
  const Scenario scenario = ReadScenario(R"({
      "events": [{"atMs": 2, "camera": "a", "event": "found"}, {"atMs": 1, "camera": "a", "event": "gone"},
                 {"atMs": 1, "camera": "a", "event": "seen"}],)" +
                                             Camera("").substr(1),
                                         "s.json");
  std::string order;
  for (const Event& event : scenario.events) order += std::to_string(event.type) + " ";
  EXPECT_EQ(order, "8 6 5 ");
}

TEST(ScenarioRead, TheSchemaKnowsNoKeyThatTheReaderRefuses) {
  const json schema = json::parse(std::ifstream(TARN_SCENARIO_SCHEMA));
  const auto expectKnown = [](const json& object, const std::string& before, const std::string& behind) {
    for (const auto& [key, form] : object["properties"].items()) {
      const std::string mistake = MistakeIn(before + "{\"" + key + "\": null}" + behind);
      EXPECT_EQ(mistake.find("is no key"), std::string::npos) << mistake;
    }
  };
  const json& forms = schema["$defs"];
  expectKnown(schema, "", "");
  expectKnown(forms["camera"], "{\"cameras\": [", "]}");
  expectKnown(forms["record"], "{\"cameras\": [", "]}");
  expectKnown(forms["record"], "{\"events\": [{\"set\": ", "}]}");
  expectKnown(forms["event"], "{\"events\": [", "]}");
  expectKnown(forms["generate"], "{\"generate\": ", "}");
  expectKnown(forms["functionFault"], "{\"functionFaults\": [", "]}");
  expectKnown(forms["error"], "{\"functionFaults\": [{\"error\": ", "}]}");
  expectKnown(forms["blockFault"], "{\"blockFaults\": [", "]}");
}

std::uint64_t DigestOfAllBlocks(const std::string& scenario) {
  World world(std::make_shared<const Scenario>(ReadScenario(scenario, "s.json")));
  std::uint64_t digest = 0xCBF29CE484222325;  // FNV-1a
  while (world.NextBlockTime()) {
    for (const std::uint8_t byte : world.TakeBlock().bytes) digest = (digest ^ byte) * 0x100000001B3;
  }
  return digest;
}

constexpr char kGenerated[] = R"({"seed": 5, "generate":
    {"count": 300, "pictures": true, "changedPercent": 30, "gonePercent": 30}})";

/// Frozen: another system, compiler or library must come to the same bytes.
TEST(GeneratedWorld, ASeedMakesTheSameBlocksEverywhere) {
  EXPECT_EQ(DigestOfAllBlocks(kGenerated), 0xA1714F019C8F9617U);
  std::string otherSeed = kGenerated;
  otherSeed[otherSeed.find('5')] = '6';
  EXPECT_NE(DigestOfAllBlocks(otherSeed), DigestOfAllBlocks(kGenerated));
}

TEST(GeneratedWorld, AddressesAreNobodyElses) {
  const Scenario scenario = ReadScenario(R"({"generate": {"count": 66000, "changedPercent": 100}})", "s.json");
  std::set<std::string> macs, ips;
  for (const CameraPlan& camera : scenario.cameras) {
    macs.insert(camera.record->mac);
    ips.insert(camera.record->ip);
  }
  for (const Event& event : scenario.events) {
    CameraRecord record;
    for (const RecordChange& change : event.set) change(record);
    if (!event.set.empty()) ips.insert(record.ip);
  }
  EXPECT_EQ(macs.size(), 66'000U);
  EXPECT_EQ(ips.size(), 132'000U);
}

}  // namespace
}  // namespace simulator
