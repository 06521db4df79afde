#include "tools/arguments.h"

#include <gtest/gtest.h>

#include "tools/command_line.h"
#include "tools/failure.h"

namespace tarnfind {
namespace {

TEST(MacArgument, IsBroughtIntoOneForm) {
  for (std::string text : {"00:40:8C:ab:cd:ef", "00-40-8c-AB-CD-EF"}) {
    EXPECT_EQ(NormaliseMac(text), "");
    EXPECT_EQ(text, "00:40:8C:AB:CD:EF");
  }
  for (std::string text : {"", "00:40:8C:AB:CD", "00:40:8C:AB:CD:EF:", "00:40:8C:AB:CD:EG", "00:40:8C:AB:CD: F",
                           "00:40:8C:AB:CD:-1", "00408CABCDEF", "00.40.8C.AB.CD.EF"}) {
    const std::string before = text;
    EXPECT_NE(NormaliseMac(text), "") << before;
    EXPECT_EQ(text, before);
  }
}

TEST(IpArgument, IsFourNumbers) {
  for (const char* text : {"0.0.0.0", "192.168.0.9", "255.255.255.255"}) EXPECT_EQ(CheckIpAddress(text), "") << text;
  for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.04", "1.2.3.-4", "1.2.3.4 ", "1..3.4", "::1",
                           "1.2.3.99999999999"})
    EXPECT_NE(CheckIpAddress(text), "") << text;
}

TEST(MaskArgument, HasItsOneBitsFirst) {
  for (const char* text : {"0.0.0.0", "128.0.0.0", "255.255.254.0", "255.255.255.255"})
    EXPECT_EQ(CheckSubnetMask(text), "") << text;
  for (const char* text : {"255.0.255.0", "0.0.0.255", "255.255.255", "255.255.253.0"})
    EXPECT_NE(CheckSubnetMask(text), "") << text;
}

TEST(SecondsArgument, IsFiniteAndBounded) {
  for (const char* text : {"0", "0.25", "5", "86400"}) EXPECT_EQ(CheckSeconds(text), "") << text;
  for (const char* text : {"", "-1", "86401", "1e9", "nan", "inf", "5s", "0x10", "0,5"})
    EXPECT_NE(CheckSeconds(text), "") << text;
}

CommandLine Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "tarnfind");
  return ParseCommandLine(arguments);
}

TEST(CommandLine, OptionsOfEveryCommandStandBeforeOrBehindIt) {
  EXPECT_TRUE(Parse({"--json", "list"}).options.json);
  EXPECT_TRUE(Parse({"list", "--json"}).options.json);
  EXPECT_EQ(Parse({"search", "--library", "/tmp/x.so"}).options.library, "/tmp/x.so");
}

TEST(CommandLine, TellsNothingGivenFromNothing) {
  const Options options = Parse({"set-network", "00-40-8c-00-00-01", "--static", "--password", ""}).options;
  EXPECT_EQ(options.mac, "00:40:8C:00:00:01");
  EXPECT_EQ(options.newDhcp, false);
  EXPECT_EQ(options.newPassword, "");
  EXPECT_EQ(options.newUser, std::nullopt);
  EXPECT_EQ(options.newIp, std::nullopt);
  EXPECT_EQ(options.networkCommandType, 1);
}

struct WrongUseRow {
  const char* name;
  std::vector<std::string> arguments;
  std::string complaint;
};
class WrongCommandLine : public testing::TestWithParam<WrongUseRow> {};
TEST_P(WrongCommandLine, IsRefusedInOneLine) {
  try {
    Parse(GetParam().arguments);
    ADD_FAILURE() << "accepted";
  } catch (const WrongUse& error) {
    EXPECT_EQ(error.what(), GetParam().complaint);
  }
}
INSTANTIATE_TEST_SUITE_P(, WrongCommandLine,
                         testing::ValuesIn(std::vector<WrongUseRow>{
                             {"NoCommand", {}, "A subcommand is required; see tarnfind --help"},
                             {"UnknownCommand", {"find"}, "\"find\" is not understood; see tarnfind --help"},
                             {"NoAddress", {"info"}, "IP is required; see tarnfind info --help"},
                             {"BadAddress",
                              {"info", "1.2.3"},
                              "IP: \"1.2.3\" is no IPv4 address such as 192.168.0.9; see tarnfind info --help"},
                             {"ControlCharacterInArgument",
                              {"info", "\x1b[2J"},
                              "IP: \"�[2J\" is no IPv4 address such as 192.168.0.9; see tarnfind info --help"},
                             {"BadType",
                              {"set-network", "00:40:8C:00:00:01", "--type", "2"},
                              "--type: must be 1 or 4; see tarnfind set-network --help"},
                             {"DhcpAndStatic",
                              {"set-network", "00:40:8C:00:00:01", "--dhcp", "--static"},
                              "--dhcp excludes --static; see tarnfind set-network --help"},
                             {"InvalidUtf8Password",
                              {"set-network", "00:40:8C:00:00:01", "--password", "\xFF"},
                              "--password: is no valid UTF-8; see tarnfind set-network --help"},
                             {"MistypedOptionDoesNotRepeatThePassword",
                              {"set-network", "00:40:8C:00:00:01", "--pasword", "secret"},
                              "\"--pasword\" is not understood; see tarnfind set-network --help"},
                         }),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace tarnfind
