/// The program as a user runs it, with the built library and a simulated server behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <tuple>

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
    Play(Content(TARNFIND_SCENARIO));
  }
  ~Program() override {
    std::filesystem::current_path(folder_.parent_path());
    std::filesystem::remove_all(folder_);
  }

  /// The scenario of the runs that follow, where ctest says.
  static void Play(const std::string& scenario) {
    std::ofstream(std::getenv("TARN_SIMULATOR_SCENARIO"), std::ios::binary) << scenario;
  }
  static Result Run(const std::string& arguments, const std::string& input = "") {
    std::ofstream("input", std::ios::binary) << input;
    const int status = std::system(("\"" TARNFIND_PROGRAM "\" " + arguments + " <input >output 2>error").c_str());
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
  const std::string change = "set-network 00:40:8C:00:00:01 --yes ";
  const struct {
    std::string arguments;
    int code;
    std::string output;
    std::string error;
  } rows[] = {
      {"--version", 0, "tarnfind 1.", ""},
      {"set-network --help", 0, "\nExamples:\n  tarnfind set-network 00:40:8C:12:34:56 --dhcp\n", ""},
      {"help", 0, "\nUsage: tarnfind [OPTIONS] SUBCOMMAND\n", ""},
      {"list", 0, "2 cameras\n", ""},
      {"list --filter vendor=x", 0, "2 cameras; 0 shown\n", ""},
      {"list --json", 0,
       R"({"event":"camera","change":"known","type":2,"camera":)" + std::string(kTheCameraAsFound) + "}\n", ""},
      {"list --json", 0, R"({"event":"summary","command":"list","cameras":2,"shown":2,"sharedIps":[]})", ""},
      {"list --json --show-passwords", 0, "\"password\":\"hunter2\"", ""},
      {"list --csv --sort ip", 0,
       "\nknown,00:40:8C:00:00:01,10.0.0.1,255.255.255.0,10.0.0.254,yes,北,M�[2J,5.7.1,Axis IPC,2,", ""},
      {"list --expect 2 --expect-mac 00408c000002", 0, "2 cameras\n", ""},
      {"list --expect 3", 4, "2 cameras\n", "tarnfind: expected 3 cameras or more, there are 2\n"},
      {"list --filter firmware=5.7 --expect-mac 00:40:8C:00:00:02", 4, "",
       "tarnfind: expected and not there: 00:40:8C:00:00:02\n"},
      {"info 10.0.0.1", 0, "Type          2 (Axis IPC)\nUser          operator\nPassword      ********\n", ""},
      {"info 0040.8c00.0001 --json", 0, R"({"event":"camera","kind":3,"type":2,"camera":{)", ""},
      {"check", 0, "\nThe server answers. It knows 2 cameras.\n", ""},
      {"send-mac 00:40:8C:00:00:01 --for 0.3", 0, "\nSent 00:40:8C:00:00:01; the library does not tell", ""},
      {"bare --json --for 0.3", 0, R"({"event":"summary","command":"bare","cameras":2,)", ""},
      {change + "--static", 0, "00:40:8C:00:00:01 applied\n", "00:40:8C:00:00:01 M�[2J\n  DHCP      yes -> no\n"},
      {change + "--password x", 0, "00:40:8C:00:00:01 cannot be known: a password cannot be read back\n",
       "00:40:8C:00:00:01 M�[2J\n  password  another one\n"},
      {change + "--dhcp", 0, "cannot be known: the list has told these settings before they were sent\n",
       "00:40:8C:00:00:01 M�[2J\n  nothing differs from the list"},
      {"info 10.0.0.3 --for 0.1", 1, "", "tarnfind: nothing arrived about a camera at 10.0.0.3 within 0.1 s"},
      {"set-network 00:40:8C:00:00:09 --dhcp --yes", 1, "",
       "tarnfind: 00:40:8C:00:00:09 not found: the server's list has no"},
      {"search --for 9 --pictures error/x", 1, "", "tarnfind: cannot make the folder"},
      {"search --for 0.2 --exec " TARNFIND_PROGRAM, 1, "2 cameras: 2 known",
       "tarnfind: a command is missing; see tarnfind --help\ntarnfind: \"" TARNFIND_PROGRAM "\" ended with 2\n"},
      {"search --for 0.2 --exec " PRINTING_PROGRAM, 0, "2 cameras: 2 known",
       "camera|known|00:40:8C:00:00:01|255.255.255.0|10.0.0.254|"
       R"({"event":"camera","change":"known","type":2,"camera":)" +
           std::string(kTheCameraAsFound)},
      {change, 2, "", "tarnfind: nothing to change"},
      {change + "--password-file -", 2, "", "tarnfind: \"-\" has no password in its first line"},
      {"set-network --from input --yes --password-file -", 2, "",
       "tarnfind: --from names the cameras and their settings"},
      {"set-network 00:40:8C:00:00:01 --dhcp", 2, "", "tarnfind: standard input is no terminal"},
      {change + "--dhcp --ip 10.0.0.3", 2, "", "tarnfind: with DHCP the network chooses the address"},
      {change + "--static --ip 10.0.0.2", 2, "",
       "tarnfind: 00:40:8C:00:00:01 refused: 10.0.0.2 belongs to 00:40:8C:00:00:02"},
      {change + "--static --gateway 10.0.1.1", 2, "",
       "tarnfind: 00:40:8C:00:00:01 refused: the gateway 10.0.1.1 is outside"},
      {change + "--static --gateway 10.0.1.1 --force", 0, "applied\n", "00:40"},
      {"list --library error", 3, "", "tarnfind: the finder library "},
      {"", 2, "", "tarnfind: a command is missing; see tarnfind --help\n"},
      {"list --json --colour", 2,
       R"({"event":"error","error":"\"--colour\" is not understood; see tarnfind list --help","exitCode":2})", "tarn"},
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
  ASSERT_EQ(news, "known0 known0 same0 picture0 same0 picture0 changed1 values0 gone4 same2 same3 same3 summary0 ");
  EXPECT_EQ(objects[2].dump(),
            R"({"event":"camera","change":"same","kind":0,"type":2,"camera":)" + std::string(kTheCameraAsFound) + "}");
  const std::string picture = Content("pictures/Camera A_-0001.png");
  EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(objects[3].dump(), R"({"event":"picture","camera":"Camera A\u001b","mac":null,"bytes":)" +
                                   std::to_string(picture.size()) +
                                   R"(,"crc32":"52e21dfe","file":"Camera A_-0001.png"})");
  EXPECT_EQ(objects[4]["camera"]["user"], nullptr) << "never supplied";
  EXPECT_EQ(objects[5]["mac"], "00:40:8C:00:00:02");
  EXPECT_EQ(objects[5]["file"], "00_40_8C_00_00_02-0002.png");
  EXPECT_EQ(objects[7]["values"].dump(), "[1,18446744073709551615]");
  EXPECT_EQ(objects[8]["camera"]["firmware"], "2") << "what was known of the one that has gone";
  EXPECT_EQ(objects[11]["camera"], objects[2]["camera"]) << "an assembled message changes only what it tells";
  EXPECT_EQ(objects[12].dump(), R"({"event":"summary","command":"search","cameras":2,"shown":2,"known":2,"new":0,)"
                                R"("changed":1,"gone":1,"pictures":2,"values":1,"list":"arrived","sharedIps":[],)"
                                R"("interrupted":false})");
}

TEST_F(Program, SearchesWithALineForEachEventAndDebuggerLinesOnRequest) {
  const Result result = Run("search --for 2 --debug-output");
  EXPECT_NE(result.error.find("Invalid struct size in read vector"), std::string::npos);
  for (const std::string lines :
       {". 00:40:8C:00:00:01 10.0.0.1        yes  北               M�[2J                  5.7.1      Axis IPC     ",
        "     2\n* picture of no known camera, \"Camera A�\": 5500 bytes\n= 00:40:8C:00:00:02 ",
        "\n* picture of 00:40:8C:00:00:02: 5500 bytes\n~ 00:40:8C:00:00:02 10.0.0.2        yes ",
        "\n* values of no known camera, \"Camera A�\": 1 18446744073709551615\n- 00:40:8C:00:00:02 ",
        " Type First    Last     Events\n. 00:40:8C:00:00:01 10.0.0.1        yes ",
        "\n2 cameras: 2 known, 0 new; 1 changed, 1 gone; 2 pictures, 1 value list in "})
    EXPECT_NE(result.output.find(lines), std::string::npos) << lines << result.output;
}

TEST_F(Program, SearchesAgainstAnEarlierListAndExpectsCamerasAsWell) {
  std::ofstream("monday.jsonl", std::ios::binary) << Run("list --json").output;
  constexpr char kDifferences[] =
      "changed   00:40:8C:00:00:02 10.0.0.2\n          firmware: \"\" -> \"2\"\ngone      00:40:8C:00:00:02 10.0.0.2\n";
  const std::tuple<const char*, int, std::string, std::string> rows[] = {
      {"--for 0.2 --expect 2", 0, "2 cameras, no difference\n", ""},
      {"--for 0.2 --expect 3", 4, "2 cameras, no difference\n", "expected 3 cameras or more, there are 2\n"},
      {"--for 2", 1, kDifferences, "1 camera differs\n"},
      {"--for 2 --expect 2", 4, kDifferences, "expected 2 cameras or more, there are 1\n"}};
  for (const auto& [arguments, code, output, error] : rows) {
    SCOPED_TRACE(arguments);
    const Result result = Run(std::string("search --against monday.jsonl ") + arguments);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.output, output);
    EXPECT_EQ(result.error, error.empty() ? "" : "tarnfind: " + error);
  }
}

TEST_F(Program, ReadsStandardInputAsBytes) {
  constexpr char kList[] = "VLIS\x0B\1\0\0\0\0\1\0\0\0\x0B\2\0\0\0A\0\x06\x1A\r\n";  // one entry: 0x000A0D1A
  const Result result = Run("decode --json", {kList, sizeof kList});
  EXPECT_NE(result.output.find("658714"), std::string::npos) << result.output << result.error;
}

TEST_F(Program, ChangesWhatIsGivenAndKeepsTheRest) {
  const std::string common = " --yes --type 4 --json --show-passwords";
  const Result result =
      Run("set-network 00:40:8C:00:00:01 --ip 10.0.0.7 --static --password-file -" + common, "n3w\r\n");
  ASSERT_EQ(result.code, 0) << result.error;
  EXPECT_EQ(Objects(result.output)[0].dump(),
            R"({"event":"set-network","mac":"00:40:8C:00:00:01","outcome":"applied","sent":true,)"
            R"("text":"the password cannot be read back","changes":[{"setting":"IP","before":"10.0.0.1",)"
            R"("after":"10.0.0.7"},{"setting":"DHCP","before":"yes","after":"no"},)"
            R"({"setting":"password","before":"hunter2","after":"n3w"}]})");
}

TEST_F(Program, ChangesManyCamerasAndKeepsTheLinesThatFailed) {
  std::ofstream("batch.csv") << "mask,mac,ip,dhcp\n,00-40-8c-00-00-01,10.0.0.8,no\n"
                                "255.0.0.0,00:40:8C:00:00:02,10.0.0.8,no\n,00:40:8C:00:00:03,,yes\n";
  const std::string outcomes =
      "00:40:8C:00:00:01 applied\n"
      "00:40:8C:00:00:02 refused: 10.0.0.8 goes to 00:40:8C:00:00:01 already\n"
      "00:40:8C:00:00:03 not found: the server's list has no such camera\n"
      "3 cameras: 1 applied, 1 refused, 1 not found\n";
  for (const auto& [remaining, error] : {std::pair{"error/x", "tarnfind: cannot write \"error/x\": "},
                                         {"batch.csv", "tarnfind: 2 of 3 cameras remain to be done\n"}}) {
    const Result result = Run(std::string("set-network --from batch.csv --yes --remaining ") + remaining);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, outcomes);
    EXPECT_NE(result.error.find(error), std::string::npos) << result.error;
  }
  EXPECT_EQ(Content("batch.csv"),
            "mask,mac,ip,dhcp\n255.0.0.0,00:40:8C:00:00:02,10.0.0.8,no\n,00:40:8C:00:00:03,,yes\n");
  const std::pair<std::string, std::string> mistakes[] = {
      {"", ":1: is empty; the first line names the columns: mac, ip, mask, gateway, dhcp, user, password"},
      {"mac,pi\n", ":1: there is no column \"pi\"; columns are mac, ip, mask, gateway, dhcp, user, password"},
      {"ip\n", ":1: the column mac is missing"},
      {"mac,dhcp\n00:40:8C:00:00:01,on\n", ":2: dhcp: \"on\" is neither yes nor no"},
      {"mac,dhcp\n00:40:8C:00:00:01,yes,\n", ":2: has 3 fields where the header has 2"},
      {"mac,dhcp\n00:40:8C:00:00:01,yes\n\n00408c000001,no\n", ":4: 00:40:8C:00:00:01 stands there twice"},
      {"mac,user\n00:40:8C:00:00:01,\"a\"\"b\n", ":2: a quotation mark is not closed"},
      {"mac,user\n00:40:8C:00:00:01,a\"b\"\n",
       ":2: a quotation mark stands inside a field; put the field in quotation marks and write it twice"},
  };
  for (const auto& [text, mistake] : mistakes) {
    std::ofstream("bad.csv") << text;
    const Result bad = Run("set-network --from bad.csv --yes");
    EXPECT_EQ(bad.code, 2);
    EXPECT_EQ(bad.error, "tarnfind: bad.csv" + mistake + "\n");
  }
}

}  // namespace
