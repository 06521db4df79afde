/// The program as a user runs it, with the built library and the simulated server of scenario.json behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

std::string Content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

struct Result {
  int code;
  std::string output;
  std::string error;
};

/// Runs it in a folder of its own, so that no path needs quoting.
class Program : public testing::Test {
 protected:
  Program() {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
  }
  ~Program() override {
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
    R"({"type":2,"mac":"00:40:8C:00:00:01","ip":"10.0.0.1","subnetMask":"255.255.255.0","gateway":"10.0.0.254",)"
    R"("model":"M\u001b[2J","firmware":"5.7.1","user":"operator","password":"********","dhcp":true,)"
    R"("plugin":"Axis IPC","flag17":false,"deviceFlags":4294836223,"vendorTypeMask":"0x40","icb":true,"gcb":false,)"
    R"("ctt":255,"vendor":"北"})";

TEST_F(Program, EndsWithTheExitCodeOfTheOutcome) {
  const struct {
    std::string arguments;
    int code;
    std::string output;
    std::string error;
  } rows[] = {
      {"--version", 0, "tarnfind 1.", ""},
      {"set-network --help", 0, "\nExamples:\n  tarnfind set-network 00:40:8C:12:34:56 --dhcp\n", ""},
      {"list", 0, "2 cameras\n", ""},
      {"list --json", 0, R"({"event":"camera","camera":)" + std::string(kTheCameraAsFound) + "}\n", ""},
      {"list --json", 0, "}\n{\"event\":\"summary\",\"command\":\"list\",\"cameras\":2}\n", ""},
      {"list --json --show-passwords", 0, "\"password\":\"hunter2\"", ""},
      {"info 10.0.0.1", 0, "Type          2 (Axis IPC)\nUser          operator\nPassword      ********\n", ""},
      {"send-mac 00:40:8C:00:00:01", 0, "Sent", ""},
      {"bare --json", 0, "{\"event\":\"summary\",\"command\":\"bare\"}\n", ""},
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
    EXPECT_EQ(result.output.find('\x1b'), std::string::npos);
  }
}

TEST_F(Program, SearchesWithAnObjectForEachEventAndKeepsPictures) {
  const Result result = Run("search --for 2 --json --pictures pictures");
  ASSERT_EQ(result.code, 0);
  EXPECT_EQ(result.error, "");
  const std::vector<Json> objects = Objects(result.output);
  std::string news;
  for (const Json& object : objects)
    news += object.value("change", object.value("event", "")) + std::to_string(object.value("kind", 0)) + " ";
  ASSERT_EQ(news, "new0 picture0 new0 changed1 values0 gone4 same2 same3 changed3 summary0 ");
  EXPECT_EQ(objects[0].dump(),
            R"({"event":"camera","change":"new","kind":0,"type":2,"camera":)" + std::string(kTheCameraAsFound) + "}");
  const std::string picture = Content("pictures/Camera A_-0001.png");
  EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(objects[1].dump(), R"({"event":"picture","camera":"Camera A\u001b","bytes":)" +
                                   std::to_string(picture.size()) +
                                   R"(,"crc32":"52e21dfe","file":"Camera A_-0001.png"})");
  EXPECT_EQ(objects[2]["camera"]["user"], nullptr) << "never supplied";
  EXPECT_EQ(objects[4]["values"].dump(), "[1,18446744073709551615]");
  EXPECT_EQ(objects[8]["camera"]["plugin"], "Axis IPC");
  EXPECT_EQ(objects[9].dump(), R"({"event":"summary","command":"search","cameras":2,"new":2,"changed":2,"same":2,)"
                               R"("gone":1,"pictures":1,"values":1})");
}

TEST_F(Program, SearchesWithALineForEachEventAndDebuggerLinesOnRequest) {
  const Result result = Run("search --for 2 --debug-output");
  EXPECT_NE(result.error.find("Invalid struct size in read vector"), std::string::npos);
  for (const std::string lines :
       {"+ 00:40:8C:00:00:01 10.0.0.1        yes  北               M�[2J                  5.7.1      Axis IPC     ",
        "     2\n* picture of Camera A�: 5500 bytes\n+ 00:40:8C:00:00:02 ",
        "\n~ 00:40:8C:00:00:02 10.0.0.2        yes ",
        "\n* values of Camera A�: 1 18446744073709551615\n- 00:40:8C:00:00:02 ",
        "\n2 cameras: 2 new, 2 changed, 1 gone; 1 picture, 1 value list in "})
    EXPECT_NE(result.output.find(lines), std::string::npos) << lines << result.output;
}

TEST_F(Program, ChangesWhatIsGivenAndKeepsTheRest) {
  const Result result =
      Run("set-network 00:40:8C:00:00:01 --ip 10.0.0.7 --static --password n3w --type 4 --json --show-passwords");
  ASSERT_EQ(result.code, 0) << result.error;
  const std::vector<Json> objects = Objects(result.output);
  ASSERT_EQ(objects.size(), 2U);
  Json expected = Json::parse(kTheCameraAsFound);
  expected.update({{"ip", "10.0.0.7"}, {"dhcp", false}, {"password", "n3w"}});
  EXPECT_EQ(objects[0]["camera"], expected);
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
