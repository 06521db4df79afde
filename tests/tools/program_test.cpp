/// The program as a user runs it, with the built library and the simulated server of scenario.json behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

std::string Content(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

struct Result {
  int code;
  std::string output;
  std::string error;
};

/// Runs it in a folder of its own, so that no path needs quoting.
class Program : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
  }
  void TearDown() override {
    std::filesystem::current_path(folder_.parent_path());
    std::filesystem::remove_all(folder_);
  }

  static Result Run(const std::string& arguments) {
    const int status = std::system(("\"" TARNFIND_PROGRAM "\" " + arguments + " >output 2>error").c_str());
    // Where signals exist, the exit code stands in the second byte.
    return {status > 255 ? status >> 8 : status, Content("output"), Content("error")};
  }
  static std::vector<Json> Objects(const std::string& output) {
    std::vector<Json> objects;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) objects.push_back(Json::parse(line));
    return objects;
  }

 private:
  const std::filesystem::path folder_ =
      std::filesystem::absolute(testing::TempDir()) / testing::UnitTest::GetInstance()->current_test_info()->name();
};

constexpr char kTheCameraAsFound[] =
    R"({"type":0,"mac":"00:40:8C:00:00:01","ip":"10.0.0.1","subnetMask":"255.255.255.0","gateway":"10.0.0.254",)"
    R"("model":"M\u001b[2J","firmware":"","user":"operator","password":"********","dhcp":true,"plugin":"UNKNOWN",)"
    R"("flag17":false,"deviceFlags":0,"vendorTypeMask":"0x0","icb":false,"gcb":false,"ctt":2,"vendor":""})";

TEST_F(Program, EndsWithTheExitCodeOfTheOutcome) {
  const struct {
    std::string arguments;
    int code;
    std::string output;
    std::string error;
  } rows[] = {
      {"--version", 0, "tarnfind 1.", ""},
      {"list", 0, "2 cameras\n", ""},
      {"info 10.0.0.2", 0, "MAC           00:40:8C:00:00:02\n", ""},
      {"send-mac 00:40:8C:00:00:01", 0, "Sent", ""},
      {"bare", 0, "Sent", ""},
      {"set-network 00-40-8c-00-00-01 --static", 0,
       "IP 10.0.0.1, mask 255.255.255.0, gateway 10.0.0.254, static. The server lists them.", ""},
      {"info 10.0.0.3 --for 0.1", 1, "", "tarnfind: nothing arrived about a camera at 10.0.0.3 within 0.1 s\n"},
      {"set-network 00:40:8C:00:00:09 --dhcp", 1, "", "tarnfind: the server has found no camera 00:40:8C:00:00:09\n"},
      {"search --for 9 --pictures error/x", 1, "", "tarnfind: cannot make the folder"},
      {"set-network 00:40:8C:00:00:01", 2, "", "tarnfind: nothing to change"},
      {"list --library error", 2, "", "tarnfind: cannot load"},
      {"", 2, "", "tarnfind: A subcommand is required; see tarnfind --help\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    const Result result = Run(row.arguments);
    EXPECT_EQ(result.code, row.code);
    EXPECT_NE(result.output.find(row.output), std::string::npos) << result.output;
    EXPECT_EQ(result.error.substr(0, row.error.size()), row.error);
    EXPECT_EQ(result.error.empty(), row.error.empty()) << result.error;
    EXPECT_EQ(result.output.find('\x1b'), std::string::npos) << "not on a terminal";
  }
}

TEST_F(Program, HelpsWithExamplesOnEachCommand) {
  for (const std::string command : {"search", "list", "info", "send-mac", "bare", "set-network"}) {
    const Result result = Run(command + " --help");
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.output.find("\nExamples:\n  tarnfind " + command), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("--show-passwords"), std::string::npos);
  }
}

TEST_F(Program, SearchesInOrderOfArrivalAndKeepsPictures) {
  const Result result = Run("search --for 2 --json --pictures pictures");
  ASSERT_EQ(result.code, 0);
  EXPECT_EQ(result.error, "");
  const std::vector<Json> objects = Objects(result.output);
  ASSERT_EQ(objects.size(), 7U) << result.output;
  EXPECT_EQ(objects[0].dump(),
            R"({"event":"camera","change":"new","kind":0,"type":0,"camera":)" + std::string(kTheCameraAsFound) + "}");
  EXPECT_EQ(objects[1]["file"], "Camera A-0001.png");
  const std::string picture = Content("pictures/Camera A-0001.png");
  EXPECT_EQ(objects[1]["bytes"], picture.size());
  EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(objects[2]["camera"]["user"], nullptr) << "never supplied";
  EXPECT_EQ(objects[3]["change"], "changed");
  EXPECT_EQ(objects[4]["values"].dump(), "[1,18446744073709551615]");
  EXPECT_EQ(objects[5]["change"], "gone");
  EXPECT_EQ(objects[6].dump(), R"({"event":"summary","command":"search","cameras":2,"new":2,"changed":1,"same":0,)"
                               R"("gone":1,"pictures":1,"values":1})");
}

TEST_F(Program, ShowsDebuggerLinesOnRequest) {
  EXPECT_NE(Run("search --for 2 --debug-output").error.find("Invalid struct size in read vector"), std::string::npos);
}

TEST_F(Program, ListsObjectsAndHidesPasswords) {
  const Result hidden = Run("list --json");
  EXPECT_EQ(hidden.output.substr(0, hidden.output.find('\n')),
            R"({"event":"camera","camera":)" + std::string(kTheCameraAsFound) + "}");
  EXPECT_EQ(Objects(hidden.output).back().dump(), R"({"event":"summary","command":"list","cameras":2})");
  EXPECT_EQ(hidden.output.find("hunter2"), std::string::npos);
  EXPECT_EQ(Objects(Run("list --json --show-passwords").output)[0]["camera"]["password"], "hunter2");
  EXPECT_EQ(Run("info 10.0.0.1").output.find("hunter2"), std::string::npos);
}

TEST_F(Program, ChangesWhatIsGivenAndKeepsTheRest) {
  const Result result =
      Run("set-network 00:40:8C:00:00:01 --ip 10.0.0.7 --static --password n3w --type 4 --json --show-passwords");
  ASSERT_EQ(result.code, 0) << result.error;
  const std::vector<Json> objects = Objects(result.output);
  ASSERT_EQ(objects.size(), 2U);
  const Json& camera = objects[0]["camera"];
  EXPECT_EQ(camera["ip"], "10.0.0.7");
  EXPECT_EQ(camera["subnetMask"], "255.255.255.0");
  EXPECT_EQ(camera["gateway"], "10.0.0.254");
  EXPECT_EQ(camera["dhcp"], false);
  EXPECT_EQ(camera["user"], "operator");
  EXPECT_EQ(camera["password"], "n3w");
  EXPECT_EQ(objects[1].dump(),
            R"({"event":"summary","command":"set-network","mac":"00:40:8C:00:00:01","listed":true})");
}

/// With refusing_scenario.json.
using RefusedProgram = Program;
TEST_F(RefusedProgram, RepeatsWhatTheServerSays) {
  const Result result = Run("list --json");
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.output, "{\"event\":\"error\",\"error\":\"Der Server ist müde\"}\n");
  EXPECT_EQ(result.error, "tarnfind: Der Server ist müde\n");
}

}  // namespace
